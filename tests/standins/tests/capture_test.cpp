#include <gtest/gtest.h>

#include "tests/service.h"
#include "tests/test_window.h"

namespace brisolte::standins {

namespace {

using namespace std::chrono_literals;

constexpr COLORREF kRed = RGB(200, 30, 40);
constexpr COLORREF kGreen = RGB(20, 180, 60);
constexpr COLORREF kBlue = RGB(10, 40, 220);
constexpr RECT kPlace{100, 100, 420, 340};
constexpr abi::SizeInt32 kSize{320, 240};
// Within the client area, whatever the frame is like.
constexpr int kX = 100;
constexpr int kY = 120;

std::uint32_t Rgb(COLORREF color) {
  return static_cast<std::uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
}

template <typename Interface>
void** Out(ComPtr<Interface>& pointer) {
  return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
}

abi::SizeInt32 ContentSize(abi::IDirect3D11CaptureFrame* frame) {
  abi::SizeInt32 size{};
  EXPECT_EQ(frame->get_ContentSize(&size), S_OK);
  return size;
}

TEST(CaptureItem, IsRefusedForWhatCannotBeCaptured) {
  const auto interop = ItemInterop();
  const TestWindow window(kPlace, kRed);
  HWND child = CreateWindowW(L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10, window.handle(), nullptr,
                             nullptr, nullptr);
  ComPtr<abi::IGraphicsCaptureItem> item;
  const auto* wrongWindow = reinterpret_cast<HWND>(0x7654321);
  const auto* wrongMonitor = reinterpret_cast<HMONITOR>(0x7654321);
  const auto& iid = abi::IGraphicsCaptureItem::kIid;

  EXPECT_EQ(interop->CreateForWindow(nullptr, iid, Out(item)), E_INVALIDARG);
  EXPECT_EQ(interop->CreateForWindow(const_cast<HWND>(wrongWindow), iid, Out(item)), E_INVALIDARG);
  EXPECT_EQ(interop->CreateForWindow(child, iid, Out(item)), E_INVALIDARG);
  EXPECT_EQ(interop->CreateForMonitor(nullptr, iid, Out(item)), E_INVALIDARG);
  EXPECT_EQ(interop->CreateForMonitor(const_cast<HMONITOR>(wrongMonitor), iid, Out(item)), E_INVALIDARG);
  EXPECT_EQ(item, nullptr);
  DestroyWindow(child);
}

TEST(CaptureItem, KnowsItsSizeAndName) {
  TestWindow window(kPlace, kRed, L"The one to capture");
  const auto item = ItemFor(window.handle());
  abi::SizeInt32 size{};
  HSTRING name = nullptr;

  ASSERT_EQ(item->get_Size(&size), S_OK);
  ASSERT_EQ(item->get_DisplayName(&name), S_OK);
  EXPECT_EQ(size.Width, 320);
  EXPECT_EQ(size.Height, 240);
  EXPECT_STREQ(WindowsGetStringRawBuffer(name, nullptr), L"The one to capture");
  WindowsDeleteString(name);

  window.MoveTo({100, 100, 500, 400});
  EXPECT_TRUE(
      Eventually([&] { return item->get_Size(&size) == S_OK && size.Width == 400 && size.Height == 300; }));

  ASSERT_EQ(ItemFor(PrimaryMonitor())->get_Size(&size), S_OK);
  EXPECT_EQ(size.Width, GetSystemMetrics(SM_CXSCREEN));
  EXPECT_EQ(size.Height, GetSystemMetrics(SM_CYSCREEN));
}

TEST(CaptureItem, TellsOnceThatItsWindowHasGone) {
  TestWindow window(kPlace, kRed);
  const auto item = ItemFor(window.handle());
  const auto counter = Make<CloseCounter>();
  abi::EventRegistrationToken token{};
  ASSERT_EQ(item->add_Closed(counter.Get(), &token), S_OK);
  const auto capture = MakeCapture(item, kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  ASSERT_NE(capture.Await(), nullptr);

  window.Destroy();

  EXPECT_TRUE(Eventually([&] { return counter->count == 1; }));
  EXPECT_TRUE(Never(200ms, [&] { return counter->count != 1; }));
}

TEST(FramePool, IsRefusedWithoutSense) {
  const auto device = MakeDevice();
  const auto statics = PoolStatics();
  const auto format = abi::DirectXPixelFormat::B8G8R8A8UIntNormalized;
  ComPtr<abi::IDirect3D11CaptureFramePool> pool;
  const auto create = [&](abi::IDirect3DDevice* with, INT32 buffers, abi::SizeInt32 size) {
    return statics->CreateFreeThreaded(with, format, buffers, size, pool.ReleaseAndGetAddressOf());
  };
  EXPECT_EQ(create(nullptr, 2, kSize), E_INVALIDARG);
  EXPECT_EQ(create(device.winrt.Get(), 0, kSize), E_INVALIDARG);
  EXPECT_EQ(create(device.winrt.Get(), 2, {0, 10}), E_INVALIDARG);
  EXPECT_EQ(create(device.winrt.Get(), 2, {10, -1}), E_INVALIDARG);
  EXPECT_EQ(create(device.winrt.Get(), 2, kSize), S_OK);

  ComPtr<abi::IDirect3D11CaptureFramePoolStatics> bound;
  ASSERT_EQ(statics->QueryInterface(abi::IDirect3D11CaptureFramePoolStatics::kIid, Out(bound)), S_OK);
  EXPECT_TRUE(FAILED(bound->Create(device.winrt.Get(), format, 2, kSize, pool.ReleaseAndGetAddressOf())));
}

TEST(FramePool, ShowsTheScreen) {
  const TestWindow window(kPlace, kBlue);
  const auto capture = MakeCapture(ItemFor(PrimaryMonitor()), {1280, 720});
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  EXPECT_TRUE(capture.AwaitColor(100 + kX, 100 + kY, Rgb(kBlue)));
}

TEST(FramePool, ClipsToItsTopLeftCorner) {
  const TestWindow window({0, 0, 320, 240}, kBlue);
  const auto capture = MakeCapture(ItemFor(PrimaryMonitor()), {202, 150});
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  ASSERT_TRUE(capture.AwaitColor(kX, kY, Rgb(kBlue)));
}

TEST(FramePool, ShowsAWindowOfAnotherProcessWithItsFrameAndWithoutWhatCoversIt) {
  const ForeignWindow window(kPlace, kGreen);
  ASSERT_NE(window.handle(), nullptr);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  ASSERT_TRUE(capture.AwaitColor(kX, kY, Rgb(kGreen)));
  POINT client{0, 0};
  ClientToScreen(window.handle(), &client);
  Close(capture.session.Get());

  const TestWindow cover({150, 50, 500, 400}, kRed);
  const auto covered = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(covered.session->StartCapture(), S_OK);
  const auto frame = covered.Await();
  ASSERT_NE(frame, nullptr);
  const auto picture = Read(covered.device, frame.Get());
  EXPECT_EQ(picture.Rgb(kX, kY), Rgb(kGreen));
  EXPECT_EQ(picture.Rgb(client.x - kPlace.left, client.y - kPlace.top), Rgb(kGreen));
  EXPECT_NE(picture.Rgb(kX, (client.y - kPlace.top) / 2), Rgb(kGreen)) << "the title bar";
  EXPECT_NE(picture.Rgb(kX, (client.y - kPlace.top) / 2), 0U) << "the title bar";
}

TEST(FramePool, KeepsItsSizeWhenTheWindowChanges) {
  TestWindow window(kPlace, kGreen);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  ASSERT_TRUE(capture.AwaitColor(kX, kY, Rgb(kGreen)));

  window.MoveTo({100, 100, 300, 250});

  ComPtr<abi::IDirect3D11CaptureFrame> frame;
  ASSERT_TRUE(Eventually([&] { return (frame = capture.Next()) && ContentSize(frame.Get()).Width == 200; }));
  EXPECT_EQ(ContentSize(frame.Get()).Height, 150);
  const auto picture = Read(capture.device, frame.Get());
  EXPECT_EQ(picture.desc.Width, 320U);
  EXPECT_EQ(picture.desc.Height, 240U);
  EXPECT_EQ(picture.Rgb(250, 100), 0U) << "black beside the content";
  EXPECT_EQ(picture.Rgb(100, 200), 0U) << "black below the content";
}

TEST(FramePool, DeliversOnlyWhatIsNew) {
  TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  ASSERT_TRUE(capture.AwaitColor(kX, kY, Rgb(kRed)));

  EXPECT_TRUE(Never(200ms, [&] { return capture.Next() != nullptr; }));
  window.Fill(kBlue);
  EXPECT_TRUE(capture.AwaitColor(kX, kY, Rgb(kBlue)));
}

TEST(FramePool, HasNoMoreFramesThanBuffers) {
  TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  auto first = capture.Await();
  window.Fill(kGreen);
  const auto second = capture.Await();
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);

  window.Fill(kBlue);
  EXPECT_TRUE(Never(200ms, [&] { return capture.Next() != nullptr; })) << "both buffers are in use";

  first.Reset();
  EXPECT_TRUE(capture.AwaitColor(kX, kY, Rgb(kBlue))) << "one is free again";
  EXPECT_EQ(Read(capture.device, second.Get()).Rgb(kX, kY), Rgb(kGreen)) << "the other keeps its picture";
  window.Fill(kRed);
  EXPECT_EQ(Close(second.Get()), S_OK);
  EXPECT_TRUE(capture.AwaitColor(kX, kY, Rgb(kRed)));
}

TEST(FramePool, CallsItsHandlersFromThreadsOfItsOwn) {
  TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  std::atomic<int> first{0};
  std::atomic<int> second{0};
  std::atomic<int> taken{0};
  std::atomic<bool> foreign{true};
  const DWORD here = GetCurrentThreadId();
  const auto takes = Make<FrameHandler>([&](abi::IDirect3D11CaptureFramePool* sender) {
    ComPtr<abi::IDirect3D11CaptureFrame> frame;
    foreign = foreign && GetCurrentThreadId() != here && sender == capture.pool.Get();
    taken += sender->TryGetNextFrame(frame.GetAddressOf()) == S_OK && frame ? 1 : 0;
    ++first;
  });
  const auto counts = Make<FrameHandler>([&](abi::IDirect3D11CaptureFramePool*) { ++second; });
  abi::EventRegistrationToken takesToken{};
  abi::EventRegistrationToken countsToken{};
  ASSERT_EQ(capture.pool->add_FrameArrived(takes.Get(), &takesToken), S_OK);
  ASSERT_EQ(capture.pool->add_FrameArrived(counts.Get(), &countsToken), S_OK);
  EXPECT_NE(takesToken.value, countsToken.value);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);

  EXPECT_TRUE(Eventually([&] { return first > 0 && second > 0; }));
  ASSERT_EQ(capture.pool->remove_FrameArrived(countsToken), S_OK);
  const int before = first;
  window.Fill(kGreen);
  EXPECT_TRUE(Eventually([&] { return first > before; }));
  EXPECT_TRUE(foreign);
  EXPECT_GE(taken, 2);
  Close(capture.session.Get());
  Close(capture.pool.Get());
}

TEST(FramePool, GivesNewBuffersOfAnotherSize) {
  const TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  const auto kept = capture.Await();
  ASSERT_NE(kept, nullptr);

  ASSERT_EQ(capture.pool->Recreate(capture.device.winrt.Get(),
                                   abi::DirectXPixelFormat::B8G8R8A8UIntNormalized, 1, {200, 160}),
            S_OK);
  const auto frame = capture.Await();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(Read(capture.device, frame.Get()).desc.Width, 200U);
  EXPECT_EQ(Read(capture.device, kept.Get()).desc.Width, 320U) << "the old frame stays valid";
}

TEST(CaptureFrame, HasATimeThatRises) {
  TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  INT64 last = 0;
  for (int i = 0; i < 5; ++i) {
    const auto frame = capture.Await();
    ASSERT_NE(frame, nullptr);
    abi::TimeSpan time{};
    ASSERT_EQ(frame->get_SystemRelativeTime(&time), S_OK);
    LARGE_INTEGER now{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    const auto nowTime = static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart) * 1e7;
    EXPECT_GT(time.Duration, last);
    EXPECT_LE(static_cast<double>(time.Duration), nowTime);
    EXPECT_GT(static_cast<double>(time.Duration), nowTime - 60e7) << "it counts from the same start";
    last = time.Duration;
    window.Fill(i % 2 == 0 ? kGreen : kBlue);
  }
}

TEST(CaptureFrame, CannotBeUsedWhenClosed) {
  const TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  const auto frame = capture.Await();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(Close(frame.Get()), S_OK);
  EXPECT_EQ(Close(frame.Get()), S_OK);

  ComPtr<abi::IDirect3DSurface> surface;
  abi::TimeSpan time{};
  abi::SizeInt32 size{};
  EXPECT_EQ(frame->get_Surface(surface.GetAddressOf()), kClosed);
  EXPECT_EQ(frame->get_SystemRelativeTime(&time), kClosed);
  EXPECT_EQ(frame->get_ContentSize(&size), kClosed);
}

TEST(CaptureSession, EndsDeliveryWhenClosed) {
  TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  EXPECT_EQ(capture.session->StartCapture(), kIllegalMethodCall);
  ASSERT_NE(capture.Await(), nullptr);
  EXPECT_EQ(Close(capture.session.Get()), S_OK);
  EXPECT_EQ(Close(capture.session.Get()), S_OK);
  EXPECT_EQ(capture.session->StartCapture(), kClosed);

  while (capture.Next() != nullptr) {
  }
  window.Fill(kBlue);
  EXPECT_TRUE(Never(200ms, [&] { return capture.Next() != nullptr; }));
}

TEST(CaptureSession, ClosesFromWithinAHandler) {
  const TestWindow window(kPlace, kRed);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  std::atomic<bool> closed{false};
  const auto handler = Make<FrameHandler>([&](abi::IDirect3D11CaptureFramePool* sender) {
    Close(capture.session.Get());
    Close(sender);
    closed = true;
  });
  abi::EventRegistrationToken token{};
  ASSERT_EQ(capture.pool->add_FrameArrived(handler.Get(), &token), S_OK);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  EXPECT_TRUE(Eventually([&] { return closed.load(); }));
}

TEST(CaptureSession, ShowsNothingOfAMinimisedWindow) {
  const TestWindow window(kPlace, kRed);
  ShowWindow(window.handle(), SW_MINIMIZE);
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  EXPECT_TRUE(Never(200ms, [&] { return capture.Next() != nullptr; }));
  ShowWindow(window.handle(), SW_RESTORE);
  EXPECT_TRUE(capture.AwaitColor(kX, kY, Rgb(kRed)));
}

TEST(FramePool, CannotBeUsedWhenClosed) {
  const TestWindow window(kPlace, kRed);
  const auto item = ItemFor(window.handle());
  const auto capture = MakeCapture(item, kSize);
  ASSERT_EQ(Close(capture.pool.Get()), S_OK);
  ASSERT_EQ(Close(capture.pool.Get()), S_OK);

  ComPtr<abi::IDirect3D11CaptureFrame> frame;
  ComPtr<abi::IGraphicsCaptureSession> session;
  ComPtr<IUnknown> queue;
  abi::EventRegistrationToken token{};
  EXPECT_EQ(capture.pool->TryGetNextFrame(frame.GetAddressOf()), kClosed);
  EXPECT_EQ(capture.pool->CreateCaptureSession(item.Get(), session.GetAddressOf()), kClosed);
  EXPECT_EQ(capture.pool->add_FrameArrived(Make<FrameHandler>([](auto*) {}).Get(), &token), kClosed);
  EXPECT_EQ(capture.pool->get_DispatcherQueue(queue.GetAddressOf()), kClosed);
  EXPECT_EQ(capture.pool->Recreate(capture.device.winrt.Get(),
                                   abi::DirectXPixelFormat::B8G8R8A8UIntNormalized, 1, kSize),
            kClosed);
}

TEST(CaptureService, ReleasesEverything) {
  {
    const TestWindow window(kPlace, kRed);
    const auto item = ItemFor(window.handle());
    const auto counter = Make<CloseCounter>();
    abi::EventRegistrationToken token{};
    item->add_Closed(counter.Get(), &token);
    auto capture = MakeCapture(item, kSize);
    capture.pool->add_FrameArrived(Make<FrameHandler>([](auto*) {}).Get(), &token);
    ASSERT_EQ(capture.session->StartCapture(), S_OK);
    ASSERT_NE(capture.Await(), nullptr);
    // Without being closed: the last reference does that as well.
    capture.session.Reset();
    capture.pool.Reset();
  }
  EXPECT_TRUE(Eventually([] { return LiveObjects(L"GraphicsCapture.dll") == 0; }));
  EXPECT_TRUE(Eventually([] { return LiveObjects(L"d3d11.dll") == 0; }));
}

TEST(CaptureSession, DrawsThePointerAndTheBorderUntilItIsToldNotTo) {
  const TestWindow window(kPlace, kRed);
  const Faults faults("DrawCursor 1\nDrawBorder 1\n");
  const auto capture = MakeCapture(ItemFor(window.handle()), kSize);
  ComPtr<abi::IGraphicsCaptureSession2> cursor;
  ComPtr<abi::IGraphicsCaptureSession3> border;
  ASSERT_EQ(capture.session->QueryInterface(abi::IGraphicsCaptureSession2::kIid, Out(cursor)), S_OK);
  ASSERT_EQ(capture.session->QueryInterface(abi::IGraphicsCaptureSession3::kIid, Out(border)), S_OK);
  ASSERT_EQ(capture.session->StartCapture(), S_OK);
  constexpr int kMiddleX = kSize.Width / 2;
  constexpr int kMiddleY = kSize.Height / 2;
  EXPECT_TRUE(capture.AwaitColor(kMiddleX, kMiddleY, 0xFF00FF));
  boolean drawn = 0;
  EXPECT_EQ(cursor->get_IsCursorCaptureEnabled(&drawn), S_OK);
  EXPECT_EQ(drawn, 1);
  EXPECT_EQ(cursor->put_IsCursorCaptureEnabled(0), S_OK);
  EXPECT_TRUE(capture.AwaitColor(kMiddleX, kMiddleY, Rgb(kRed)));
  EXPECT_EQ(border->put_IsBorderRequired(0), S_OK);
  EXPECT_TRUE(Eventually([&] {
    const auto frame = capture.Next();
    return frame != nullptr && Read(capture.device, frame.Get()).Rgb(2, kMiddleY) != 0xFFFF00;
  }));
  EXPECT_EQ(Close(capture.session.Get()), S_OK);
  EXPECT_EQ(border->get_IsBorderRequired(&drawn), kClosed);
}

TEST(CaptureService, FailsWhatItIsToldToFail) {
  const TestWindow window(kPlace, kRed);
  const auto item = ItemFor(window.handle());
  const auto capture = MakeCapture(item, kSize);
  const auto interop = ItemInterop();
  ComPtr<abi::IGraphicsCaptureItem> other;
  {
    const Faults faults("CreateForWindow 0x80070005 skip 1 times 1\nStartCapture 0x8000FFFF\n");
    const auto create = [&] {
      return interop->CreateForWindow(window.handle(), abi::IGraphicsCaptureItem::kIid, Out(other));
    };
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(create(), E_ACCESSDENIED);
    EXPECT_EQ(create(), S_OK);
    EXPECT_EQ(capture.session->StartCapture(), E_UNEXPECTED);
    EXPECT_EQ(capture.session->StartCapture(), E_UNEXPECTED);
  }
  EXPECT_EQ(capture.session->StartCapture(), S_OK);
  const auto frame = capture.Await();
  ASSERT_NE(frame, nullptr);
  abi::TimeSpan time{};
  const Faults faults("get_SystemRelativeTime 0x80004005\nClose 0x80004005\nget_Surface 0x0");
  ComPtr<abi::IDirect3DSurface> surface;
  EXPECT_EQ(frame->get_SystemRelativeTime(&time), E_FAIL);
  EXPECT_EQ(Close(frame.Get()), E_FAIL);
  EXPECT_EQ(frame->get_Surface(surface.GetAddressOf()), S_OK);
  EXPECT_EQ(surface, nullptr);
}

}  // namespace

}  // namespace brisolte::standins

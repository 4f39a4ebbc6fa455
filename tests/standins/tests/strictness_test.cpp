#include <gtest/gtest.h>
#include <objbase.h>
#include <roapi.h>

#include <future>
#include <string_view>
#include <thread>

#include "tests/service.h"
#include "tests/test_window.h"

namespace brisolte::standins {

namespace {

/// Runs a function on a thread in a single-threaded apartment.
template <typename Work>
auto InApartmentOfItsOwn(Work work) {
  return std::async(std::launch::async,
                    [&] {
                      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
                      auto result = work();
                      CoUninitialize();
                      return result;
                    })
      .get();
}

/// Runs a function on a thread that asked for no apartment.
template <typename Work>
auto Elsewhere(Work work) {
  return std::async(std::launch::async, work).get();
}

HRESULT FindItemFactory() {
  HSTRING name = nullptr;
  ComPtr<IInspectable> factory;
  const std::wstring_view text = abi::kGraphicsCaptureItemClass;
  WindowsCreateString(text.data(), static_cast<UINT32>(text.size()), &name);
  const HRESULT found =
      RoGetActivationFactory(name, __uuidof(IInspectable), reinterpret_cast<void**>(factory.GetAddressOf()));
  WindowsDeleteString(name);
  return found;
}

TEST(Strictness, RefusesCallsFromAnotherApartment) {
  const auto item = ItemFor(PrimaryMonitor());
  const auto capture = MakeCapture(item, {64, 64});
  const auto size = [&] {
    abi::SizeInt32 found{};
    return item->get_Size(&found);
  };
  const auto start = [&] { return capture.session->StartCapture(); };
  const auto close = [&] { return Close(capture.session.Get()); };
  EXPECT_EQ(InApartmentOfItsOwn(size), RPC_E_WRONG_THREAD);
  EXPECT_EQ(InApartmentOfItsOwn(start), RPC_E_WRONG_THREAD);
  EXPECT_EQ(Elsewhere(size), S_OK);
  EXPECT_EQ(Elsewhere(start), S_OK);
  EXPECT_EQ(InApartmentOfItsOwn(close), RPC_E_WRONG_THREAD);
  EXPECT_EQ(InApartmentOfItsOwn([&] { return Close(capture.pool.Get()); }), RPC_E_WRONG_THREAD);
  EXPECT_EQ(close(), S_OK);
}

TEST(Strictness, GivesFramesToEveryApartment) {
  const auto capture = MakeCapture(ItemFor(PrimaryMonitor()), {64, 64});
  capture.session->StartCapture();
  const auto frame = InApartmentOfItsOwn([&] { return capture.Await(); });
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(InApartmentOfItsOwn([&] { return Close(frame.Get()); }), S_OK);
}

TEST(Strictness, TellsWhenTheProcessLetsGoOfCom) {
  ItemInterop();
  const long atFirst = ComLetGoCount();
  CoUninitialize();  // of this program
  ASSERT_TRUE(Eventually([&] { return ComLetGoCount() > atFirst; }));
  const long before = ComLetGoCount();
  testing::internal::CaptureStderr();
  Elsewhere([] {
    CO_MTA_USAGE_COOKIE cookie = nullptr;
    CoIncrementMTAUsage(&cookie);
    ItemInterop();
    CoDecrementMTAUsage(cookie);
    return true;
  });
  EXPECT_TRUE(Eventually([&] { return ComLetGoCount() == before + 1; }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "standin: the process let go of COM, which unloads the service under its threads\n");
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
}

TEST(Strictness, RefusesAThreadWithoutCom) {
  CoUninitialize();  // of this program
  EXPECT_EQ(Elsewhere(FindItemFactory), CO_E_NOTINITIALIZED);
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  EXPECT_EQ(Elsewhere(FindItemFactory), S_OK);
}

TEST(Strictness, ForgivesWhenAnotherApartmentIsLeft) {
  const long before = ComLetGoCount();
  InApartmentOfItsOwn([] { return ItemInterop() != nullptr; });
  EXPECT_TRUE(Never(std::chrono::milliseconds(200), [&] { return ComLetGoCount() != before; }));
}

TEST(Strictness, CanGiveWindowsThatAreLargerThanTheirContent) {
  constexpr RECT kPlace{100, 100, 420, 340};
  constexpr int kX = 100;
  constexpr int kY = 120;
  const TestWindow window(kPlace, RGB(20, 180, 60));
  const Faults faults("InvisibleBorders 1\n");
  const auto item = ItemFor(window.handle());
  abi::SizeInt32 size{};
  ASSERT_EQ(item->get_Size(&size), S_OK);
  EXPECT_EQ(size.Width, 334);
  EXPECT_EQ(size.Height, 247);
  const auto capture = MakeCapture(item, size);
  capture.session->StartCapture();
  const auto first = capture.Await();
  ASSERT_NE(first, nullptr);
  first->get_ContentSize(&size);
  EXPECT_EQ(size.Width, 334);
  EXPECT_EQ(size.Height, 247);
  const auto picture = Read(capture.device, first.Get());
  EXPECT_EQ(picture.Rgb(kX, kY), 0x14B43CU);
  EXPECT_EQ(picture.Rgb(320, kY), 0U);
  EXPECT_EQ(picture.Rgb(kX, 240), 0U);
  Close(first.Get());
  const auto second = capture.Await();
  ASSERT_NE(second, nullptr);
  second->get_ContentSize(&size);
  EXPECT_EQ(size.Width, 320);
  EXPECT_EQ(size.Height, 240);
  ASSERT_EQ(ItemFor(PrimaryMonitor())->get_Size(&size), S_OK);
  EXPECT_EQ(size.Width, GetSystemMetrics(SM_CXSCREEN));
}

TEST(Faults, LetACallHangUntilTheyAreGone) {
  const auto item = ItemFor(PrimaryMonitor());
  std::future<HRESULT> call;
  {
    const Faults faults("get_Size hang\n");
    call = std::async(std::launch::async, [&] {
      abi::SizeInt32 size{};
      return item->get_Size(&size);
    });
    EXPECT_EQ(call.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
  }
  EXPECT_EQ(call.get(), S_OK);
}

}  // namespace

}  // namespace brisolte::standins

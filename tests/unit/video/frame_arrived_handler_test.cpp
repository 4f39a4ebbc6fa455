#include "video/frame_arrived_handler.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "video/query_interface.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

TEST(FrameArrivedHandler, PassesCallsAndTheirResultsOn) {
  int calls = 0;
  const auto handler = MakeFrameArrivedHandler([&] { return ++calls == 1 ? S_OK : E_ABORT; });
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), S_OK);
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_ABORT);
}

TEST(FrameArrivedHandler, LetsNoExceptionOut) {
  const auto handler = MakeFrameArrivedHandler([]() -> std::int32_t { throw std::runtime_error("broke"); });
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_FAIL);
}

TEST(FrameArrivedHandler, MayBeCalledFromAnyThread) {
  const auto handler = MakeFrameArrivedHandler([] { return S_OK; });
  ComPtr<abi::IAgileObject> agile;
  ComPtr<abi::IFrameArrivedHandler> same;
  ComPtr<abi::IClosable> closable;
  EXPECT_EQ(QueryByIid(handler.Get(), agile), S_OK);
  EXPECT_EQ(QueryByIid(agile.Get(), same), S_OK);
  EXPECT_EQ(same.Get(), handler.Get());
  EXPECT_EQ(QueryByIid(handler.Get(), closable), E_NOINTERFACE);
  EXPECT_EQ(closable, nullptr);
  EXPECT_EQ(handler->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST(FrameArrivedHandler, LivesAsLongAsItIsHeld) {
  const auto watched = std::make_shared<int>(0);
  auto handler = MakeFrameArrivedHandler([watched] { return S_OK; });
  ComPtr<abi::IFrameArrivedHandler> second = handler;
  handler = nullptr;
  EXPECT_EQ(watched.use_count(), 2);
  second = nullptr;
  EXPECT_EQ(watched.use_count(), 1);
}

}  // namespace
}  // namespace brisolte

#include <gtest/gtest.h>

#include <algorithm>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

class TransmitQueue : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->ReqTimer.SetMode(0);  // nothing but what the test queues
  }
  void Tick() { h.w->Timer2_Action(h.w->Timer2); }
  std::vector<std::string>& Writes() { return h.Line().writes; }
  WindowHarness h;
};

TEST_F(TransmitQueue, OneFramePerTickEachInOneWrite) {
  h.w->ReqFreq(8);
  h.w->ReqMode(8);
  Tick();
  ASSERT_EQ(Writes().size(), 1u);
  EXPECT_EQ(Writes()[0], Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
  Tick();
  ASSERT_EQ(Writes().size(), 2u);
  EXPECT_EQ(Writes()[1], Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x04, 0xFD}));
}

// The line records every Write, an empty one too, so an idle tick that wrote "" would show here.
TEST_F(TransmitQueue, AnEmptyRingWritesNothingAtAll) {
  for (int i = 0; i < 5; ++i) Tick();
  EXPECT_EQ(Writes().size(), 0u);
  h.w->ReqFreq(8);  // once drained, the ring is empty again away from position 0
  for (int i = 0; i < 5; ++i) Tick();
  EXPECT_EQ(Writes(), (std::vector<std::string>{Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD})}));
}

TEST_F(TransmitQueue, TransfersAreCutAtFiftyBytes) {
  struct Case {
    int length;
    std::vector<std::size_t> transfers;
  } cases[] = {{50, {50}}, {51, {50, 1}}, {49, {49}}, {120, {50, 50, 20}}};
  for (const auto& c : cases) {
    Writes().clear();
    h.w->SendSerialPacket(std::string(static_cast<std::size_t>(c.length), '\x01'));
    for (std::size_t i = 0; i < c.transfers.size() + 2; ++i) Tick();
    std::vector<std::size_t> sizes;
    for (const auto& w : Writes()) sizes.push_back(w.size());
    EXPECT_EQ(sizes, c.transfers) << c.length;
  }
}

TEST_F(TransmitQueue, AnEndByteInsideAFrameEndsTheTransferAndTheRestFollows) {
  h.w->SendSerialPacket(Bytes({0x01, 0xFD, 0x02, 0x03}));
  Tick();
  Tick();
  EXPECT_EQ(Writes(), (std::vector<std::string>{Bytes({0x01, 0xFD}), Bytes({0x02, 0x03})}));
}

TEST_F(TransmitQueue, AFrameOverTheEndOfTheRingGoesOutWholeInOneWrite) {
  h.w->serialBufHead = h.w->serialBufTail = 9997;
  h.w->ReqFreq(8);
  EXPECT_EQ(h.w->serialBufHead, 3);
  EXPECT_EQ(h.w->serialBuf[10000], 0);  // the position past the ring is never used
  Tick();
  ASSERT_EQ(Writes().size(), 1u);
  EXPECT_EQ(Writes()[0], Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
  EXPECT_EQ(h.w->serialBufTail, 3);
}

TEST_F(TransmitQueue, AByteStoredAtTheLastPositionLeavesTheHeadAtZero) {
  h.w->serialBufHead = h.w->serialBufTail = 9999;
  h.w->SendSerialPacket(Bytes({0x42}));
  EXPECT_EQ(h.w->serialBuf[9999], 0x42);
  EXPECT_EQ(h.w->serialBufHead, 0);
}

TEST_F(TransmitQueue, AFullRingRefusesTheWholeFrameAndKeepsWhatWaits) {
  const std::string frame = Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD});
  int accepted = 0;
  while (h.w->RefusedFrames() == 0) {
    h.w->SendSerialPacket(frame);
    if (h.w->RefusedFrames() == 0) ++accepted;
  }
  EXPECT_EQ(accepted, 9999 / 6);
  for (int i = 0; i < 100; ++i) h.w->SendSerialPacket(frame);
  const auto told = [&] {
    return std::count(h.log.lines.begin(), h.log.lines.end(), "transmit queue full: frame refused");
  };
  EXPECT_EQ(told(), 1);                              // a flood of refusals is told once
  h.w->SendSerialPacket(Bytes({0x01, 0x02, 0x03}));  // 3 bytes still fit: 9999 - 9996
  EXPECT_EQ(h.w->RefusedFrames(), 101);
  h.w->SendSerialPacket(Bytes({0x04}));
  EXPECT_EQ(h.w->RefusedFrames(), 102);
  EXPECT_EQ(told(), 2);
  for (int i = 0; i < accepted + 1; ++i) Tick();
  ASSERT_EQ(Writes().size(), static_cast<std::size_t>(accepted + 1));
  for (int i = 0; i < accepted; ++i) ASSERT_EQ(Writes()[static_cast<std::size_t>(i)], frame) << i;
  EXPECT_EQ(Writes().back(), Bytes({0x01, 0x02, 0x03}));
}

TEST_F(TransmitQueue, EverySendIsLoggedWithoutItsContent) {
  h.log.lines.clear();
  h.w->SendSerialPacket("");
  h.w->ReqFreq(8);
  EXPECT_EQ(h.log.lines, (std::vector<std::string>{"send packet", "send packet"}));
  EXPECT_EQ(h.w->serialBufHead, 6);
}

TEST_F(TransmitQueue, FramesLeaveTheRingAlsoWithTheLineClosed) {
  h.Line().lost = true;
  h.w->ReqFreq(8);
  Tick();
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
  EXPECT_TRUE(Writes().empty());
}

}  // namespace
}  // namespace tarn::test

#include <gtest/gtest.h>

#include <set>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Radios on the in-memory bus: each frequency request to one of their addresses is answered.
void AnswerAt(MemoryLine& line, std::set<int> addresses) {
  line.onWrite = [addresses](MemoryLine& l, const std::string& w) {
    if (w.size() == 6 && static_cast<unsigned char>(w[4]) == 0x03 &&
        addresses.count(static_cast<unsigned char>(w[2]))) {
      l.incoming += Bytes({0xFE, 0xFE, 0xE0, static_cast<unsigned char>(w[2]), 0x03, 0x00, 0x00,
                           0x50, 0x45, 0x01, 0xFD});
    }
  };
}

class RadioDiscovery : public ::testing::Test {
 protected:
  void SetUp() override { h.Start(); }
  void Tick() { h.clock.AdvanceBy(1000); }
  bool Searching() const {
    const bool running = h.w->FindRadiosTimer.Mode() == 2;
    EXPECT_EQ(!h.w->FindRadiosButton.Enabled(), running);
    EXPECT_EQ(!h.w->pollRadios, running);
    return running;
  }
  WindowHarness h;
};

TEST_F(RadioDiscovery, AWholeSearchReportsTheAddressesThatAnsweredInDecimal) {
  AnswerAt(h.Line(), {0, 8, 136, 255});
  h.w->FindRadiosButton.Push();
  EXPECT_TRUE(Searching());
  int ticks = 0;
  while (Searching()) {
    Tick();
    ++ticks;
    ASSERT_LE(ticks, 300);
    if (ticks == 258) {
      EXPECT_EQ(h.w->FreqDisplay.Text(), "-");  // answers go to the flag only
    }
  }
  EXPECT_EQ(ticks, 259);
  EXPECT_EQ(h.w->EditField1.Text(),
            " Found radio at address 0\n Found radio at address 8\n"
            " Found radio at address 136\n Found radio at address 255\n");
  EXPECT_EQ(h.w->StaticFindRadios.Text(), "Looking for radio 256");
  EXPECT_EQ(h.w->findRadiosState, -3);
}

TEST_F(RadioDiscovery, TheFirstRequestLeavesAtTheThirdTick) {
  h.w->ReqTimer.SetMode(0);
  h.w->FindRadiosButton.Push();
  Tick();
  Tick();
  EXPECT_TRUE(h.Line().writes.empty());
  EXPECT_EQ(h.w->StaticFindRadios.Text(), "-");
  Tick();
  h.clock.AdvanceBy(20);
  ASSERT_EQ(h.Line().writes.size(), 1u);
  EXPECT_EQ(h.Line().writes[0], Bytes({0xFE, 0xFE, 0x00, 0xE0, 0x03, 0xFD}));
  EXPECT_EQ(h.w->StaticFindRadios.Text(), "Looking for radio 0");
}

TEST_F(RadioDiscovery, FramesInTheIdleTicksAreNotReported) {
  h.w->FindRadiosButton.Push();
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
  Tick();
  Tick();
  EXPECT_TRUE(h.w->gotFreqReply);
  Tick();  // count 0: no address was asked before it
  Tick();  // count 1: address 0 did not answer
  EXPECT_EQ(h.w->EditField1.Text(), "");
}

TEST_F(RadioDiscovery, PollingHoldsDuringTheSearchAndResumesAfterIt) {
  h.w->FindRadiosButton.Push();
  const std::size_t before = h.Line().writes.size();
  for (int i = 0; i < 259; ++i) Tick();
  // Every address in turn, 256 as its low byte; an address byte 0xFD cuts its frame's transfer.
  std::string expected;
  for (int a = 0; a <= 256; ++a) expected += Bytes({0xFE, 0xFE, a & 0xFF, 0xE0, 0x03, 0xFD});
  std::string sent;
  for (std::size_t i = before; i < h.Line().writes.size(); ++i) sent += h.Line().writes[i];
  EXPECT_EQ(HexText(sent.substr(0, expected.size())), HexText(expected));
  EXPECT_TRUE(h.w->FindRadiosButton.Enabled());
  Tick();
  ASSERT_GE(h.Line().writes.size() - before, 258u);
  EXPECT_EQ(static_cast<unsigned char>(h.Line().writes.back()[2]), 0x08);  // polling asks again
}

TEST_F(RadioDiscovery, ASecondSearchAppendsItsReportsToTheFirst) {
  AnswerAt(h.Line(), {0x94});
  for (int search = 0; search < 2; ++search) {
    h.w->FindRadiosButton.Push();
    h.w->FindRadiosButton.Push();  // a disabled button keeps a second press out
    for (int i = 0; i < 259; ++i) Tick();
  }
  EXPECT_EQ(h.w->EditField1.Text(), " Found radio at address 148\n Found radio at address 148\n");
}

}  // namespace
}  // namespace tarn::test

#include <gtest/gtest.h>

#include <cstdint>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

std::vector<int> Commands(const MemoryLine& line) {
  std::vector<int> cmds;
  for (const auto& w : line.writes) cmds.push_back(static_cast<unsigned char>(w.at(4)));
  return cmds;
}

TEST(StatusPolling, RatePeriodTable) {
  WindowHarness h;
  h.Start();
  struct Case {
    const char* text;
    i64 period;
  } cases[] = {{"2000", 1000}, {"2001", 1000}, {"3", 1},   {"1", 0},     {"0", 0},
               {"", 0},        {"abc", 0},     {"-5", -2}, {"500", 250}, {"1e999", INT64_MAX}};
  for (const auto& c : cases) {
    h.w->EditUpdateRate.SetText(c.text);
    EXPECT_EQ(h.w->ReqTimer.Period(), c.period) << '"' << c.text << '"';
  }
}

TEST(StatusPolling, AlternatesFrequencyAndModeRequestsOnePerTick) {
  WindowHarness h;
  h.Start();
  EXPECT_EQ(h.w->ReqTimer.Period(), 1000);
  h.clock.AdvanceBy(4050);
  EXPECT_EQ(Commands(h.Line()), (std::vector<int>{3, 4, 3, 4}));
  EXPECT_EQ(h.Line().writes[0], Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
}

TEST(StatusPolling, AddressEditTakesEffectAtTheNextTick) {
  WindowHarness h;
  h.Start();
  h.clock.AdvanceBy(1050);
  h.w->EditRadioIDHex.SetText("94");
  h.clock.AdvanceBy(1000);
  ASSERT_EQ(h.Line().writes.size(), 2u);
  EXPECT_EQ(static_cast<unsigned char>(h.Line().writes[1][2]), 0x94);
}

TEST(StatusPolling, ARestingRateSendsNothingAndAValidRateBringsPollingBack) {
  WindowHarness h;
  h.Start();
  for (const char* text : {"0", "1", "", "-5", "letters"}) {
    h.w->EditUpdateRate.SetText(text);
    h.clock.AdvanceBy(60'000);
    EXPECT_TRUE(h.Line().writes.empty()) << text;
    EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
  }
  h.w->EditUpdateRate.SetText("400");
  h.clock.AdvanceBy(1000);
  EXPECT_EQ(h.Line().writes.size(), 5u);
}

TEST(StatusPolling, ASearchHoldsPollingAndTheQuestionDueIsAskedFirstAfterwards) {
  WindowHarness h;
  h.Start();
  h.clock.AdvanceBy(1050);  // frequency asked; mode is due
  EXPECT_EQ(h.w->requestType, 1);
  h.w->FindRadiosButton.SetEnabled(false);
  h.clock.AdvanceBy(10'000);
  EXPECT_EQ(h.Line().writes.size(), 1u);
  EXPECT_EQ(h.w->requestType, 1);
  h.w->FindRadiosButton.SetEnabled(true);
  h.clock.AdvanceBy(1000);
  EXPECT_EQ(Commands(h.Line()), (std::vector<int>{3, 4}));
}

TEST(StatusPolling, AnUnknownRequestTypeGoesBackToFrequencyWithoutSending) {
  WindowHarness h;
  h.Start();
  h.w->requestType = 7;
  h.clock.AdvanceBy(1050);
  EXPECT_TRUE(h.Line().writes.empty());
  h.clock.AdvanceBy(1000);
  EXPECT_EQ(Commands(h.Line()), (std::vector<int>{3}));
}

}  // namespace
}  // namespace tarn::test

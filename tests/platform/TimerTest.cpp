#include <gtest/gtest.h>

#include <vector>

#include "platform/ManualClock.h"
#include "platform/Timer.h"

namespace tarn {
namespace {

struct Recorder {
  std::vector<i64> at;
  void Attach(Timer& t, ManualClock& clock) {
    t.Action = [this, &clock](Timer&) { at.push_back(clock.NowMs()); };
  }
};

TEST(Timer, RepeatingTimerFiresEveryPeriod) {
  ManualClock clock;
  Timer t("t", clock, 2, 50);
  Recorder r;
  r.Attach(t, clock);
  clock.AdvanceBy(200);
  EXPECT_EQ(r.at, (std::vector<i64>{50, 100, 150, 200}));
}

TEST(Timer, OneShotFiresOnceAndRestsAfterwards) {
  ManualClock clock;
  Timer t("t", clock, 0, 1000);
  Recorder r;
  r.Attach(t, clock);
  clock.AdvanceBy(5000);
  EXPECT_TRUE(r.at.empty());
  t.SetMode(1);
  clock.AdvanceBy(5000);
  EXPECT_EQ(r.at, (std::vector<i64>{6000}));
  EXPECT_EQ(t.Mode(), 0);
}

TEST(Timer, SettingOneShotAgainRestartsThePeriod) {
  ManualClock clock;
  Timer t("t", clock, 0, 1000);
  Recorder r;
  r.Attach(t, clock);
  t.SetMode(1);
  clock.AdvanceBy(600);
  t.SetMode(1);
  clock.AdvanceBy(600);
  EXPECT_TRUE(r.at.empty());
  clock.AdvanceBy(400);
  EXPECT_EQ(r.at, (std::vector<i64>{1600}));
}

TEST(Timer, PeriodBelowOneMillisecondRestsUntilAUsablePeriodComes) {
  ManualClock clock;
  Timer t("t", clock, 2, 100);
  Recorder r;
  r.Attach(t, clock);
  for (i64 p : {0, -2}) {
    t.SetPeriod(p);
    clock.AdvanceBy(10'000);
    EXPECT_TRUE(r.at.empty()) << p;
    EXPECT_FALSE(clock.IsArmed(t));
  }
  t.SetPeriod(250);
  clock.AdvanceBy(500);
  EXPECT_EQ(r.at.size(), 2u);
}

TEST(Timer, SettingRepeatOnARepeatingTimerKeepsItsRhythm) {
  ManualClock clock;
  Timer t("t", clock, 2, 100);
  Recorder r;
  r.Attach(t, clock);
  clock.AdvanceBy(50);
  t.SetMode(2);
  clock.AdvanceBy(50);
  EXPECT_EQ(r.at, (std::vector<i64>{100}));
}

TEST(Timer, StoppedTimerDoesNotFireAndRestartsAFullPeriodLater) {
  ManualClock clock;
  Timer t("t", clock, 2, 100);
  Recorder r;
  r.Attach(t, clock);
  clock.AdvanceBy(30);
  t.SetMode(0);
  clock.AdvanceBy(1000);
  t.SetMode(2);
  clock.AdvanceBy(100);
  EXPECT_EQ(r.at, (std::vector<i64>{1130}));
}

TEST(ManualClock, TimersDueTogetherFireInTheOrderTheirDueTimeWasSet) {
  ManualClock clock;
  std::vector<std::string> order;
  Timer a("a", clock, 2, 10);
  Timer b("b", clock, 2, 50);
  a.Action = [&](Timer&) { order.push_back("a"); };
  b.Action = [&](Timer&) { order.push_back("b"); };
  clock.AdvanceBy(50);
  ASSERT_EQ(order.size(), 6u);
  EXPECT_EQ(order[4], "b");  // due at 50 since 0; a was last set due at 50 when it fired at 40
  EXPECT_EQ(order[5], "a");
}

}  // namespace
}  // namespace tarn

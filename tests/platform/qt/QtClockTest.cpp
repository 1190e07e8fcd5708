// The window's timers on real QTimers, and the wait of a loop that holds the thread.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QTest>
#include <memory>

#include "platform/Serial.h"
#include "platform/qt/QtClock.h"
#include "support/MemorySerial.h"

namespace tarn {
namespace {

constexpr int kPatienceMs = 5000;  // a failure bound only; the checks wait for events, not time

TEST(QtClock, ARepeatingTimerFiresAgainAndAgain) {
  QtClock clock;
  Timer timer("Timer2", clock, 2, 10);
  int fired = 0;
  timer.Action = [&](Timer&) { ++fired; };
  EXPECT_TRUE(QTest::qWaitFor([&] { return fired >= 3; }, kPatienceMs));
  EXPECT_EQ(timer.Mode(), 2);
  ASSERT_NE(clock.QtTimerFor(timer), nullptr);
  EXPECT_TRUE(clock.QtTimerFor(timer)->isActive());
}

TEST(QtClock, AOneShotFiresOnceAndGoesToRest) {
  QtClock clock;
  Timer timer("JammerTimer", clock, 0, 20);
  int fired = 0;
  i64 modeInAction = -1;
  timer.Action = [&](Timer& t) {
    ++fired;
    modeInAction = t.Mode();
  };
  timer.SetMode(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return fired == 1; }, kPatienceMs));
  EXPECT_EQ(modeInAction, 0);  // at rest before its Action ran
  QTest::qWait(100);           // five more periods: a one-shot must stay quiet
  EXPECT_EQ(fired, 1);
  EXPECT_FALSE(clock.QtTimerFor(timer)->isActive());
}

TEST(QtClock, ARestingModeOrAPeriodBelowOneMillisecondStopsTheQtTimer) {
  QtClock clock;
  Timer timer("ReqTimer", clock, 2, 1000);
  ASSERT_TRUE(clock.QtTimerFor(timer)->isActive());
  timer.SetPeriod(0);
  EXPECT_FALSE(clock.QtTimerFor(timer)->isActive());
  timer.SetPeriod(1000);
  EXPECT_TRUE(clock.QtTimerFor(timer)->isActive());
  timer.SetMode(0);
  EXPECT_FALSE(clock.QtTimerFor(timer)->isActive());
}

TEST(QtClock, ShortPeriodsArePreciseAndOneShotsSingleShot) {
  QtClock clock;
  Timer pump("Timer1", clock, 2, 50);
  Timer poll("ReqTimer", clock, 2, 1000);
  Timer jam("JammerTimer", clock, 1, 1000);
  EXPECT_EQ(clock.QtTimerFor(pump)->timerType(), Qt::PreciseTimer);
  EXPECT_EQ(clock.QtTimerFor(pump)->interval(), 50);
  EXPECT_FALSE(clock.QtTimerFor(pump)->isSingleShot());
  EXPECT_EQ(clock.QtTimerFor(poll)->timerType(), Qt::CoarseTimer);
  EXPECT_TRUE(clock.QtTimerFor(jam)->isSingleShot());
}

TEST(QtClock, AGoneTimerTakesItsQtTimerWithIt) {
  QtClock clock;
  int fired = 0;
  auto timer = std::make_unique<Timer>("Timer2", clock, 2, 5);
  timer->Action = [&](Timer&) { ++fired; };
  const QPointer<const QTimer> qtTimer = clock.QtTimerFor(*timer);
  ASSERT_FALSE(qtTimer.isNull());
  timer.reset();
  EXPECT_TRUE(qtTimer.isNull());
  QTest::qWait(30);
  EXPECT_EQ(fired, 0);
}

TEST(QtClock, NowMovesOnWithRealTime) {
  QtClock clock;
  const i64 before = clock.NowMs();
  QTest::qWait(25);
  EXPECT_GE(clock.NowMs() - before, 25);
}

TEST(QtClock, WaitingOnAClosedPortSleepsInsteadOfSpinning) {
  QtClock clock;
  test::MemorySerialDriver driver;
  RecordingLog log;
  RecordingMessages messages;
  Serial port(driver, log, messages);  // never opened: WaitReadable answers at once
  QElapsedTimer waited;
  waited.start();
  EXPECT_FALSE(clock.WaitForInput(port, 40));
  EXPECT_GE(waited.elapsed(), 39);
}

TEST(QtClock, WaitingOnAPortWithBytesReturnsTrue) {
  QtClock clock;
  test::MemorySerialDriver driver;
  RecordingLog log;
  RecordingMessages messages;
  Serial port(driver, log, messages);
  port.SerialPort = {"mem", "/mem/0"};
  ASSERT_TRUE(port.Open());
  driver.Line("/mem/0").incoming.assign(1, '\xFB');  // an answer byte
  EXPECT_TRUE(clock.WaitForInput(port, 40));
}

}  // namespace
}  // namespace tarn

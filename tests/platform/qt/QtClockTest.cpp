// SPDX-License-Identifier: GPL-3.0-or-later
// The window's timers on real QTimers, woken by a real line.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/PosixSerial.h"
#include "platform/qt/QtClock.h"
#include "support/Recording.h"

namespace tarn {
namespace {

// A byte on the line wakes the sleeping pump for one tick; a hang-up wakes it to find the loss and
// then nothing more, though a dead line stays readable for ever. The port opens after the watch
// began: the watch follows the port to each device it opens.
TEST(QtClock, ALineWakesItsSleepingTimerForOneTickAndAHangUpOnlyUntilTheLossIsSeen) {
  QtClock clock;
  PosixSerialDriver driver;
  test::RecordingLog log;
  test::RecordingMessages status;
  Serial port(driver, log, status);
  Timer pump("Timer1", clock, 2, 50);
  std::string ticks;  // what each tick read, and a bar
  pump.Action = [&](Timer&) { ticks += port.ReadAll() + "|"; };
  pump.SleepWhenIdle([&] { return port.WantsRead(); });
  clock.WakeOnInput(port, pump);
  Timer resting("ReqTimer", clock, 2, 0), stopped("FindRadiosTimer", clock, 0, 10);
  resting.Action = stopped.Action = [&](Timer&) { ticks += "!"; };  // a timer at rest never fires
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
  port.SerialPort = {"pty", ptsname(master)};
  ASSERT_TRUE(port.Open());
  ASSERT_EQ(write(master, "\xFB", 1), 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return ticks == "\xFB|"; }, 5000)) << ticks;
  close(master);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !status.Status().empty(); }, 5000));
  QTest::qWait(200);
  EXPECT_EQ(ticks, "\xFB||");
  QElapsedTimer waited;  // the scan run's wait on a dead line sleeps instead of spinning
  waited.start();
  EXPECT_FALSE(clock.WaitForInput(port, 40));
  EXPECT_GE(waited.elapsed(), 39);
}

}  // namespace
}  // namespace tarn

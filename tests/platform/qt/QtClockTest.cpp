// SPDX-License-Identifier: GPL-3.0-or-later
// The window's timers on real QTimers, woken by a real line.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/PosixSerial.h"
#include "platform/qt/QtClock.h"
#include "support/WindowHarness.h"

namespace tarn {
namespace {

// The window's timers over a pseudo-terminal. A byte on the line wakes the sleeping pump for one
// tick. A frame that a full line holds back wakes it from the transmit tick, and its read sends the
// frame. A hang-up wakes it to find the loss, which drops what was held, and then nothing wakes it,
// though a dead line stays readable for ever. The port opens after the watch began: the watch
// follows it. Timers at rest, a repeating one of period 0 among them, never fire.
TEST(QtClock, ALineWakesThePumpAsOftenAsAReadHasSomethingToDo) {
  QtClock clock;
  PosixSerialDriver driver;
  bool full = false;
  driver.calls.write = [&](int fd, const void* bytes, std::size_t n) -> ssize_t {
    return full ? (errno = EAGAIN, -1) : ::write(fd, bytes, n);
  };
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
  test::WindowHarness h(0);
  IcomWindow w(h.app, {clock, h.ports, driver, h.log, h.messages, h.chooser, {}});
  int ticks = 0;
  w.Timer1.Action = [&, pump = w.Timer1.Action](Timer& t) { ++ticks, pump(t); };
  w.Open();
  h.ports.Ports().push_back({"pty", ptsname(master)});
  w.SerialPopup.OpenList();
  w.init();
  w.EditUpdateRate.SetText("1");
  w.ShowDataCheck.SetValue(true);
  ASSERT_EQ(write(master, "\xFB", 1), 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return w.EditField1.Text() == "FB_"; }, 5000));
  QTest::qWait(200);
  EXPECT_EQ(ticks, 1);
  full = true;
  w.SendSerialPacket("\xFD");
  EXPECT_TRUE(QTest::qWaitFor([&] { return w.Serial1->HoldsOutput(); }, 5000));
  full = false;
  char sent = 0;
  EXPECT_TRUE(QTest::qWaitFor([&] { return read(master, &sent, 1) == 1 && sent == '\xFD'; }, 5000));
  full = true;
  w.SendSerialPacket("\xFD");
  EXPECT_TRUE(QTest::qWaitFor([&] { return w.Serial1->HoldsOutput(); }, 5000));
  close(master);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !h.messages.Status().empty(); }, 5000));
  EXPECT_FALSE(w.Serial1->HoldsOutput());
  const int atLoss = ticks;
  w.SendSerialPacket("\xFD");
  QTest::qWait(200);
  EXPECT_EQ(ticks, atLoss);
  EXPECT_EQ(h.log.Count("send packet"), 3);
  QElapsedTimer waited;  // the scan run's wait on a dead line sleeps instead of spinning
  waited.start();
  EXPECT_FALSE(clock.WaitForInput(*w.Serial1, 40));
  EXPECT_GE(waited.elapsed(), 39);
}

}  // namespace
}  // namespace tarn

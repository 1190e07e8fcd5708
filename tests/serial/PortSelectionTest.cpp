#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

TEST(PortSelection, StartUpOpensPortZeroThreeTimesAndEndsAt9600) {
  WindowHarness h(2);
  h.Start();
  EXPECT_EQ(h.Line(0).opens, 3);
  EXPECT_EQ(h.Line(1).opens, 0);
  ASSERT_FALSE(h.Line(0).configured.empty());
  EXPECT_EQ(h.Line(0).configured.back().baud, 9600);
  EXPECT_EQ(h.Line(0).configured.back().dataBits, 8);
  EXPECT_EQ(h.Line(0).configured.back().parity, 'N');
  EXPECT_EQ(h.Line(0).configured.back().stopBits, 1);
  EXPECT_FALSE(h.Line(0).configured.back().xonXoff);
  EXPECT_EQ(h.w->SerialPopup.Rows(), (std::vector<std::string>{"port0", "port1"}));
  EXPECT_TRUE(h.messages.shown.empty());
}

TEST(PortSelection, EveryBaudRowSelectsItsSpeed) {
  const int speeds[] = {300,  600,  1200,  1800,  2400,  3600,  4800,
                        7200, 9600, 14400, 19200, 28800, 38400, 57600};
  WindowHarness h;
  h.Start();
  for (int row = 0; row < 14; ++row) {
    h.w->BaudPopup.SetListIndex(row);
    EXPECT_EQ(h.Line().configured.back().baud, speeds[row]) << h.w->BaudPopup.Text();
    EXPECT_TRUE(h.Line().open);
  }
}

TEST(PortSelection, ChangingTheSpeedReopensThePortChosenInThePortPopup) {
  WindowHarness h(3);
  h.Start();
  h.w->SerialPopup.SetListIndex(2);
  EXPECT_EQ(h.app.ourSerialPort, 2);
  EXPECT_TRUE(h.Line(2).open);
  EXPECT_FALSE(h.Line(0).open);
  h.app.ourSerialPort = 0;
  h.w->BaudPopup.SetListIndex(12);
  EXPECT_EQ(h.app.ourSerialPort, 2);
  EXPECT_EQ(h.Line(2).configured.back().baud, 38400);
  EXPECT_FALSE(h.Line(0).open);
}

TEST(PortSelection, NoRowChosenKeepsThePortInUse) {
  WindowHarness h(2);
  h.Start();
  const int opens = h.Line(0).opens;
  h.w->SerialPopup.SetListIndex(-1);
  EXPECT_EQ(h.app.ourSerialPort, -1);
  EXPECT_TRUE(h.Line(0).open);
  EXPECT_EQ(h.Line(0).opens, opens);
}

TEST(PortSelection, AFailedOpenSaysSoOnceAndTheProgramGoesOn) {
  WindowHarness h(2);
  h.Line(1).refuseOpen = true;
  h.Start();
  h.w->SerialPopup.SetListIndex(1);
  EXPECT_EQ(h.messages.shown, (std::vector<std::string>{"Failure to open serial  port!!"}));
  EXPECT_TRUE(h.Line(1).configured.empty());  // no line settings after a failed open
  h.w->ReqFreq(8);
  h.clock.AdvanceBy(1000);  // the timers go on with nothing open
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
  h.Line(1).refuseOpen = false;
  h.w->SerialPopup.SetListIndex(1);
  EXPECT_TRUE(h.Line(1).open);
  EXPECT_EQ(h.messages.shown.size(), 1u);
}

TEST(PortSelection, APortThatDoesNotExistReportsTheMessage) {
  WindowHarness h(0);
  h.ports.Ports().push_back({"ghost", ""});
  h.Start();
  EXPECT_EQ(h.messages.shown.size(), 3u);  // one per opening of an ordinary start
  h.clock.AdvanceBy(3000);
  EXPECT_NE(h.w->serialBufHead, 0);  // polling goes on
}

TEST(PortSelection, NoPortAtAllOpensNothingAndSaysNothing) {
  WindowHarness h(0);
  h.Start();
  EXPECT_EQ(h.w->SerialPopup.ListCount(), 0);
  EXPECT_FALSE(h.w->Serial1->IsOpen());
  EXPECT_TRUE(h.messages.shown.empty());
  h.clock.AdvanceBy(5000);
  EXPECT_FALSE(h.w->Serial1->IsOpen());
  EXPECT_TRUE(h.messages.shown.empty());
  EXPECT_TRUE(h.messages.statuses.empty());
  EXPECT_GE(h.w->serialBufHead, 5 * 6);               // polling went on, one frame a second
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);  // and its frames left the ring unopened
}

TEST(PortSelection, ReopeningKeepsTheRingAndTheHalfReceivedFrame) {
  WindowHarness h;
  h.Start();
  h.w->ReqTimer.SetMode(0);
  h.w->ReqFreq(8);
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00});
  h.w->CheckSerial();
  h.w->BaudPopup.SetListIndex(10);
  EXPECT_EQ(h.Line().configured.back().baud, 19200);
  h.Line().incoming = Bytes({0x25, 0x14, 0xFD});
  h.w->CheckSerial();
  EXPECT_EQ(h.w->FreqDisplay.Text(), "14250");
  h.w->DoSerialOut();
  ASSERT_FALSE(h.Line().writes.empty());
  EXPECT_EQ(h.Line().writes.back(), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
}

}  // namespace
}  // namespace tarn::test

namespace tarn::test {
namespace {

// A lost port is a state, not an event: it stands in the window's status line (no box per read,
// and no message but the failed opening's) until a port opens again.
TEST(LostPort, StandsInTheStatusUntilThePortIsPickedAgainWhenItIsBack) {
  WindowHarness h;
  h.Start();
  h.clock.AdvanceBy(1000);
  h.Line().lost = true;  // the adapter is unplugged
  h.clock.AdvanceBy(10'000);
  EXPECT_TRUE(h.messages.shown.empty());
  ASSERT_EQ(h.messages.statuses.size(), 1u);
  EXPECT_EQ(h.messages.Status(),
            "Serial port port0 is gone: choose it again under Serial Port once it is back.");
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);  // frames still leave the ring

  h.Line().lost = false;  // plugged back in: the user picks the port again
  h.w->SerialPopup.SetListIndex(0);
  EXPECT_TRUE(h.Line().open);
  EXPECT_EQ(h.messages.Status(), "");
  const std::size_t before = h.Line().writes.size();
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x25, 0x14, 0x00, 0xFD});
  h.clock.AdvanceBy(2000);
  EXPECT_GT(h.Line().writes.size(), before);
  EXPECT_EQ(h.w->FreqDisplay.Text(), "14250");

  h.Line().lost = true;  // a second loss is told again
  h.clock.AdvanceBy(1000);
  EXPECT_EQ(h.messages.statuses.size(), 3u);
  EXPECT_NE(h.messages.Status().find("is gone"), std::string::npos);
  EXPECT_TRUE(h.messages.shown.empty());
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// Port selection, the receive pump and the transmit ring: on the virtual clock over memory lines,
// then what only a real line shows, on a pseudo-terminal with the simulated radio.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <tuple>

#include "support/PtyHarness.h"

namespace tarn::test {
namespace {

const std::string kFreqRequest = Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD});

class SerialTransport : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->ReqTimer.SetMode(0);  // nothing in the ring but what a test puts there
  }
  void Tick() { h.clock.AdvanceBy(10); }  // one tick of Timer2, woken or not
  WindowHarness h{2};
};

// The opening count shows that a change of speed closes the port and opens it afresh.
TEST_F(SerialTransport, EveryBaudRowReopensThePortChosenInSerialPopupAtItsSpeed) {
  const int speeds[] = {300,  600,  1200,  1800,  2400,  3600,  4800,
                        7200, 9600, 14400, 19200, 28800, 38400, 57600};
  h.w->SerialPopup.SetListIndex(1);
  for (int row = 0; row < 14; ++row) {
    h.app.ourSerialPort = 0;  // a stored port must not decide which port opens
    h.w->BaudPopup.SetListIndex(row);
    EXPECT_EQ(h.app.ourSerialPort, 1);
    ASSERT_EQ(h.Line(1).configured.size(), row + 2u);
    EXPECT_EQ(h.Line(1).configured.back().baud, speeds[row]);
  }
  EXPECT_EQ(h.Line(1).opens, 15);
}

// A frame that waits in the ring goes out on the next port that opens.
TEST_F(SerialTransport, AFailedOpenIsToldAndSetsNothingAndNoRowKeepsThePortInUse) {
  h.w->ReqFreq(8);
  h.Line(1).refuseOpen = true;
  h.w->SerialPopup.SetListIndex(1);
  h.w->BaudPopup.SetListIndex(12);
  EXPECT_EQ(h.messages.shown, std::vector<std::string>(2, "Failure to open serial  port!!"));
  EXPECT_EQ(h.w->Serial1->Baud, 8);  // the failed choice set no speed
  h.Line(1).refuseOpen = false;
  h.w->SerialPopup.SetListIndex(1);
  h.w->SerialPopup.SetListIndex(-1);
  EXPECT_EQ(h.app.ourSerialPort, -1);
  EXPECT_EQ(h.Line(1).opens, 3);
  Tick();
  EXPECT_EQ(h.Line(1).writes, std::vector<std::string>{kFreqRequest});
}

// The cut keeps the last 500 characters of the old text, and only then the read is appended. With
// the monitor off it neither grows nor shrinks.
TEST_F(SerialTransport, TheMonitorKeepsTheLast500OldCharactersThenAppendsTheReadInHex) {
  const std::tuple<bool, std::size_t, std::string, std::size_t, std::string> cases[] = {
      {true, 500, Bytes({0x0A}), 0, "0A_"},
      {true, 501, Bytes({0xA0}), 1, "A0_"},
      {true, 620, Bytes({0x00, 0xFF, 0xA0, 0x01}), 120, "00_FF_A0_01_"},
      {true, 700, "", 0, ""},  // an empty read cuts nothing
      {false, 700, Bytes({0x01}), 0, ""},
  };
  for (const auto& [shown, before, bytes, cut, hex] : cases) {
    std::string old;
    for (std::size_t i = 0; i < before; ++i) old.push_back(static_cast<char>('a' + i % 26));
    h.w->EditField1.SetText(old);
    h.w->ShowDataCheck.SetValue(shown);
    h.Line().incoming = bytes;
    h.w->CheckSerial();
    EXPECT_EQ(h.w->EditField1.Text(), old.substr(cut) + hex) << before;
  }
}

TEST_F(SerialTransport, ATickMakesThreeReads) {
  h.w->ShowDataCheck.SetValue(true);
  h.Line().arrivals = {Bytes({0x01}), Bytes({0x02}), Bytes({0x03}), Bytes({0x04})};
  h.w->Timer1_Action(h.w->Timer1);
  EXPECT_EQ(h.w->EditField1.Text(), "01_02_03_");
}

// A lost port stands in the status line until a port opens again, and a second loss is told again.
TEST_F(SerialTransport, ALostPortIsToldOnceUntilAPortOpensAgain) {
  h.Line().lost = true;
  h.w->Timer1_Action(h.w->Timer1);
  h.w->SerialPopup.SetListIndex(0);
  h.w->CheckSerial();
  EXPECT_EQ(h.messages.statuses.size(), 3u);  // gone, cleared by the opening, gone
}

TEST_F(SerialTransport, ATickWritesUpToTheEndByteOrAllThatWaitsOr50Bytes) {
  const std::string fifty(50, '\x01');
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {kFreqRequest + kFreqRequest, {kFreqRequest, kFreqRequest}},
      {Bytes({0x01, 0xFD, 0x02, 0x03}), {Bytes({0x01, 0xFD}), Bytes({0x02, 0x03})}},
      {fifty, {fifty}},
      {fifty + "\x01", {fifty, "\x01"}},
      {"", {}},  // an empty ring writes nothing, not even an empty text
  };
  for (const auto& [queued, writes] : cases) {
    h.Line().writes.clear();
    h.w->SendSerialPacket(queued);
    for (int i = 0; i < 3; ++i) Tick();
    EXPECT_EQ(h.Line().writes, writes) << queued.size();
  }
}

// 10000 positions hold at most 9999 bytes: a frame that does not fit whole is refused whole, and
// the transfer that runs over the end of the ring still goes out in one Write.
TEST_F(SerialTransport, TheRingRunsOverItsEndAndRefusesWholeFramesBeyond9999Bytes) {
  h.w->serialBufHead = h.w->serialBufTail = 9997;
  std::string waiting;
  for (int i = 0; i < 9996; ++i) waiting.push_back(static_cast<char>(i % 250));
  h.w->SendSerialPacket(waiting);
  for (int i = 0; i < 3; ++i) h.w->SendSerialPacket(Bytes({0x01, 0x02, 0x03, 0x04}));
  h.w->SendSerialPacket(Bytes({0x01, 0x02, 0x03}));
  EXPECT_EQ(h.w->RefusedFrames(), 3);
  EXPECT_EQ(h.log.Count("transmit queue full: frame refused"), 1);
  for (int i = 0; i < 250; ++i) Tick();
  EXPECT_EQ(h.Line().AllWritten(), waiting + Bytes({0x01, 0x02, 0x03}));
  EXPECT_EQ(h.Line().writes.size(), 200u);
}

// The line is seen through a second descriptor, taken before the program claims the line.
TEST(PtyLink, TheChosenSpeedIsInForceRaw8N1) {
  PtyHarness h;
  const int line = ::open(h.radio->SlavePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  h.Start();
  termios tio{};
  ASSERT_EQ(::tcgetattr(line, &tio), 0);
  tio.c_cflag = (tio.c_cflag & ~CSIZE) | CS7 | PARENB | CSTOPB;
  tio.c_lflag |= ICANON | ECHO | ISIG;
  ASSERT_EQ(::tcsetattr(line, TCSANOW, &tio), 0);
  h.w->BaudPopup.SetListIndex(9);   // 14400 has no termios constant: it is set by number
  h.w->BaudPopup.SetListIndex(13);  // not 38400, which a new pseudo-terminal already has
  ASSERT_EQ(::tcgetattr(line, &tio), 0);
  ::close(line);
  EXPECT_EQ(::cfgetospeed(&tio), B57600);
  EXPECT_EQ(tio.c_cflag & (CSIZE | PARENB | CSTOPB | CREAD), CS8 | CREAD);
  EXPECT_EQ(tio.c_lflag & (ICANON | ECHO | ISIG), 0u);
  EXPECT_EQ(tio.c_iflag & (IXON | IXOFF), 0u);
  EXPECT_EQ(h.log.lines, std::vector<std::string>{});  // every setting took, 14400 too
}

// A lost line is a state, not an event: it is told once, in the status line, not per read.
TEST(PtyLink, AHangUpIsToldOnceInTheStatus) {
  PtyHarness h;
  h.Start();
  h.w->ReqTimer.SetMode(0);  // no writes: the reads alone find the hang-up
  h.radio->Hangup();
  h.Run(1000);
  EXPECT_EQ(h.messages.statuses.size(), 1u);
}

}  // namespace
}  // namespace tarn::test

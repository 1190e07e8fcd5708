// SPDX-License-Identifier: GPL-3.0-or-later
// Port selection, the receive pump and the transmit ring: on the virtual clock over memory lines,
// then what only a real line shows, on a pseudo-terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <random>
#include <tuple>

#include "support/LineFaults.h"
#include "support/WindowHarness.h"
#include "support/TempFolder.h"

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
  TempFolder dir;
  WindowHarness h{2, dir.Path()};
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
// the monitor off it neither grows nor shrinks. The debug box, here on only while the monitor is
// off, traces a read whatever the monitor does. A frame is on the displays before it shows.
TEST_F(SerialTransport, TheMonitorKeepsTheLast500OldCharactersThenAppendsTheReadInHex) {
  const std::tuple<bool, std::size_t, std::string, std::size_t, std::string> cases[] = {
      {true, 500, Bytes({0x0A}), 0, "0A_"},
      {true, 501, Bytes({0xA0}), 1, "A0_"},
      {true, 620, Bytes({0x00, 0xFF, 0xA0, 0x01}), 120, "00_FF_A0_01_"},
      {true, 700, "", 0, ""},  // an empty read cuts nothing
      {false, 700, Bytes({0x01}), 0, ""},
      {true, 0, Hex("FE FE E0 08 03 00 00 50 45 01 FD"), 0, "FE_FE_E0_08_03_00_00_50_45_01_FD_"},
  };
  std::string freqWhenShown;
  h.w->EditField1.TextChange = [&](EditField&) { freqWhenShown = h.w->FreqDisplay.Text(); };
  for (const auto& [shown, before, bytes, cut, hex] : cases) {
    std::string old;
    for (std::size_t i = 0; i < before; ++i) old.push_back(static_cast<char>('a' + i % 26));
    h.w->EditField1.SetText(old);
    h.w->ShowDataCheck.SetValue(shown);
    h.w->DebugCheckBox.SetValue(!shown);
    h.Line().incoming = bytes;
    h.w->CheckSerial();
    EXPECT_EQ(h.w->EditField1.Text(), old.substr(cut) + hex) << before;
  }
  EXPECT_EQ(freqWhenShown, "145500");
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "01_");
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

// The line is left as a fresh USB serial device is, cooked (and at 7E2 besides), and its reads and
// writes fail at random as real ones do. The port makes it raw 57600 8N1 (after 14400, set by
// number), and a random session, every byte value in its first chunks, crosses it: each byte the
// window queued goes on the line once and in order, each byte the line delivered is read once and
// in order, and nothing is added (no echo, no CR/NL mapping, no flow control, no signal).
TEST(PtyLink, EveryByteCrossesACookedLineThatFailsAtRandomOnceAndInOrder) {
  std::mt19937 random(16);
  TempFolder dir;
  WindowHarness h(0, dir.Path());
  PosixSerialDriver driver;
  InjectLineFaults(driver, random);
  h.lineDriver = &driver;
  const int far = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_TRUE(far >= 0 && grantpt(far) == 0 && unlockpt(far) == 0);
  h.ports.Ports().push_back({"pty", ptsname(far)});
  const int line = ::open(ptsname(far), O_RDWR | O_NOCTTY);  // taken before the program's
  termios tio{};
  ASSERT_EQ(::tcgetattr(line, &tio), 0);
  tio.c_iflag |= ICRNL | IXON | IXOFF | BRKINT | IMAXBEL;
  tio.c_oflag |= OPOST | ONLCR;
  tio.c_lflag |= ICANON | ECHO | ECHOE | ECHOK | ECHOCTL | ECHOKE | ISIG | IEXTEN;
  tio.c_cflag = (tio.c_cflag & ~CSIZE) | CS7 | PARENB | CSTOPB;
  ASSERT_EQ(::tcsetattr(line, TCSANOW, &tio), 0);
  h.Start();
  h.w->BaudPopup.SetListIndex(9);
  h.w->BaudPopup.SetListIndex(13);  // not 38400, which a new pseudo-terminal already has
  EXPECT_EQ(h.log.lines, std::vector<std::string>{});  // every setting took, 14400 too
  ASSERT_EQ(::tcgetattr(line, &tio), 0);
  EXPECT_EQ(::cfgetospeed(&tio), B57600);
  EXPECT_EQ(tio.c_cflag & (CSIZE | PARENB | CSTOPB | CREAD), CS8 | CREAD);
  h.w->ReqTimer.SetMode(0);
  h.w->DebugCheckBox.SetValue(true);
  std::string queued, delivered, onLine;
  const auto chunk = [&](std::string& to, int t) {  // every byte value first, then at random
    std::string bytes(t == 0 ? 256 : 1 + random() % 40, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(t ? random() : i);
    return to += bytes, bytes;
  };
  for (int t = 0; t < 40'000; ++t) {
    if (t < 30'000 && (t == 0 || random() % 40 == 0)) h.w->SendSerialPacket(chunk(queued, t));
    if (t < 30'000 && (t == 0 || random() % 40 == 0)) {
      const std::string bytes = chunk(delivered, t);
      ASSERT_EQ(::write(far, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    if (t >= 30'000) {  // the rest at the kernel's pace
      if (onLine == queued && dir.Read("DEBUG.TXT") == HexText(delivered)) break;
      h.w->Serial1->WaitReadable(1);
    }
    h.clock.AdvanceBy(1);
    char buf[512];
    for (ssize_t n; (n = ::read(far, buf, sizeof buf)) > 0;) onLine.append(buf, std::size_t(n));
  }
  EXPECT_TRUE(onLine == queued) << onLine.size() << " bytes on the line of " << queued.size();
  EXPECT_TRUE(dir.Read("DEBUG.TXT") == HexText(delivered)) << "the bytes read differ";
  ::close(line);
  ::close(far);
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// The link in both directions: frames the program writes, and the bytes it reads back to displays.
#include <gtest/gtest.h>

#include <tuple>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Everything waiting in the transmit ring, as hex text; the ring is left empty. No test here
// fills it far enough to wrap.
std::string Take(IcomWindow& w) {
  std::string out;
  for (; w.serialBufTail < w.serialBufHead; ++w.serialBufTail)
    out.push_back(static_cast<char>(w.serialBuf[static_cast<std::size_t>(w.serialBufTail)]));
  return HexText(out);
}

// A started window: controller e0, radio 08, and the popups as they start.
struct Link : ::testing::Test {
  void SetUp() override { h.Start(); }
  WindowHarness h;
};

// Field texts are UTF-8 and count by characters, however many bytes each takes.
TEST_F(Link, FromHexTurnsAnyTextIntoOneByte) {
  const std::pair<const char*, i64> cases[] = {
      {"", 0},    {"A", 10}, {"e0", 224}, {"Fb", 251}, {"a04", 160}, {"G5", 5},
      {"5G", 80}, {" 5", 5}, {"é5", 5},   {"5é", 80},  {"éa4", 10},  {"1€", 16},
  };
  for (auto [text, value] : cases) EXPECT_EQ(h.w->FromHex(text), value) << '"' << text << '"';
}

// The popup row 1 is "5" bytes, row 0 "4".
TEST_F(Link, SetFreqSendsPackedDecimalPairsLeastSignificantFirst) {
  const std::tuple<double, i64, const char*> cases[] = {
      {145.5, 1, "49 00 50 45 01"}, {145.5, 0, "49 00 50 45"},     {144.0, 1, "50 00 00 44 01"},
      {145.0, 1, "49 00 00 45 01"}, {14.195, 1, "50 50 19 14 00"}, {10000.0, 1, "49 00 00 00 A0"},
  };
  for (auto [mhz, bytesRow, data] : cases) {
    h.w->PopupFreqBytes.SetListIndex(bytesRow);
    h.w->SetFreq(8, mhz);
    EXPECT_EQ(Take(*h.w), HexText(Hex("FE FE 08 E0 05 " + std::string(data) + " FD")))
        << mhz << " MHz, row " << bytesRow;
  }
}

// The controller field is read as each frame is built; SetMode reads the Radio ID field itself.
// Addresses go out as they stand, with no escaping of FE or FD.
TEST_F(Link, FramesTakeTheAddressesOfTheMoment) {
  h.w->OurIDEditFieldHex.SetText("a1");
  h.w->EditRadioIDHex.SetText("5c");
  h.w->SetFreq(0x33, 14.25);
  h.w->ReqMode(0x44);
  h.w->OurIDEditFieldHex.SetText("fd");
  h.w->SetMode();
  h.w->ReqFreq(0xFE);
  EXPECT_EQ(Take(*h.w), HexText(Hex("FE FE 33 A1 05 49 00 25 14 FD  FE FE 44 A1 04 FD "
                                    "FE FE 5C FD 06 00 01 FD  FE FE FE FD 03 FD")));
}

// What a stream leaves on the screen: frequency, mode and filter displays, then "ack" when an
// answer code was seen and "jam" when the jam indicator shows.
std::string Outcome(const IcomWindow& w) {
  return w.FreqDisplay.Text() + " " + w.ModeDisplay.Text() + " " + w.FilterDisplay.Text() +
         (w.gotAckNak ? " ack" : "") + (w.StaticJamming.Visible() ? " jam" : "");
}

// Every stream goes to a window of its own.
TEST_F(Link, StreamsInDisplaysAndFlagsOut) {
  const std::pair<const char*, const char*> cases[] = {
      {"FE FE E0 08 03 00 00 50 45 01 FD FE FE E0 08 04 00 01 FD", "145500 LSB WIDE"},
      {"FE FE E0 08 03 00 00 25 14 FD FE FE E0 08 04 02 02 FD", "14250 AM MEDIUM"},
      {"FE FE E0 08 03 00 00 00 00 00 01 FD FE FE E0 08 04 04 03 FD", "100000 RTTY NARROW"},
      {"FE FE E0 08 03 00 FE FE 45 FD FE FE E0 08 04 06 04 FD", "46656.4 FM-WIDE -"},
      {"FE FE E0 08 03 FB 00 50 45 01 FD FE FE E0 08 04 07 FD", "145500.161 CW-REVERSE - ack"},
      {"FE FE E0 08 05 01 01 FD FE FE E0 08 04 08 00 FD", "- RTTY-REVERSE -"},
      {"FE FE E0 08 04 0B 03 00 FD", "- SYNC-AM NARROW"},
      {"FE FE E0 08 04 07 03 FD FE FE E0 08 04 09 00 FD", "- CW-REVERSE NARROW"},
      {"FE FE E0 08 04 08 01 FD FE FE E0 08 04 0A 04 FD", "- RTTY-REVERSE WIDE"},
      {"FE FE E0 08 04 0B 02 FD FE FE E0 08 04 0C 01 FD", "- SYNC-AM WIDE"},
      {"FE FE E0 08 04 01 01 FD FE FE E0 08 04 11 02 FD", "- USB MEDIUM"},
      {"FE FE 94 08 04 03 03 FD FE FE E0 08 04 01 FD", "- USB -"},
      {"FE FE 94 08 04 03 02 FD FE FE E0 08 04 FD", "- CW -"},
      {"FE FE 08 E0 03 FD FE FE FE E0 08 03 FD", "- - -"},
      {"FE 00 FE FE E0 08 04 01 FD", "- USB -"},
      {"FE FE E0 08 FD FE FE E0 08 03 FD", "- - -"},
      {"FE FE E0 08 03 00 FC 00 50 FD", "- - - jam"},
      {"FE FE E0 08 FC FE FE E0 08 04 05 FD", "- FM - jam"},
      {"FE FE E0 08 FB FD FE FE E0 08 04 01 FD", "- USB - ack"},
      {"FE FA FE FE E0 08 04 01 FD", "- USB - ack"},
  };
  for (auto [stream, outcome] : cases) {
    WindowHarness fresh;
    fresh.Start();
    fresh.Parse(Hex(stream));
    EXPECT_EQ(Outcome(*fresh.w), outcome) << stream;
  }
}

// The frame in hand is for us when the field names its address at the end byte. Its pairs are
// summed from the least significant one with a true division by 100.0.
TEST_F(Link, TheReceiverReadsTheControllerAddressAtTheEndByte) {
  h.Parse(Hex("FE FE 94 08 03 00 00 25 14 00"));
  h.w->OurIDEditFieldHex.SetText("94");
  h.Parse(Hex("FD"));
  EXPECT_EQ(h.w->FreqDisplay.Text(), "14250");
  EXPECT_EQ(h.w->ParseFreq(), 14249.999999999998);
}

TEST_F(Link, TheReceiverKeepsAtMost257DataBytesAndStillEndsTheFrame) {
  for (int dataBytes : {256, 257, 258, 600}) {
    h.w->FreqDisplay.SetText("-");
    h.Parse(Hex("FE FE E0 08 03") + std::string(static_cast<std::size_t>(dataBytes), '\0'));
    EXPECT_EQ(h.w->parseMsgLength, std::min(dataBytes, 257)) << dataBytes;
    h.Parse(Hex("FD"));
    EXPECT_EQ(h.w->FreqDisplay.Text(), "0") << dataBytes;
  }
}

// A second jam byte keeps the indicator up a full period from then.
TEST_F(Link, TheJamIndicatorHidesOnePeriodAfterTheLastJamByte) {
  h.Parse(Hex("FC"));
  h.clock.AdvanceBy(800);
  h.Parse(Hex("FC"));
  h.clock.AdvanceBy(999);
  EXPECT_TRUE(h.w->StaticJamming.Visible());
  h.clock.AdvanceBy(1);
  EXPECT_FALSE(h.w->StaticJamming.Visible());
  EXPECT_EQ(h.w->JammerTimer.Mode(), 0);  // a one-shot rests once it has fired
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// The link in both directions: frames the program writes, and the bytes it reads back to displays.
// What any stream shows on the displays is checked by the receive fuzz target, against a decoder
// of its own, from the named cases in its corpus on.
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

// The frame in hand is for us when the field names its address at the end byte. Its pairs are
// summed from the least significant one with a true division by 100.0.
TEST_F(Link, TheReceiverReadsTheControllerAddressAtTheEndByte) {
  h.Parse(Hex("FE FE 94 08 03 00 00 25 14 00"));
  h.w->OurIDEditFieldHex.SetText("94");
  h.Parse(Hex("FD"));
  EXPECT_EQ(h.w->FreqDisplay.Text(), "14250");
  EXPECT_EQ(h.w->ParseFreq(), 14249.999999999998);
}

}  // namespace
}  // namespace tarn::test

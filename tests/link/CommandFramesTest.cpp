#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Everything waiting in the transmit ring, in order.
std::string Queued(const IcomWindow& w) {
  std::string out;
  for (i64 i = w.serialBufTail; i != w.serialBufHead; i = (i + 1) % IcomWindow::kRingPositions) {
    out.push_back(static_cast<char>(w.serialBuf[static_cast<std::size_t>(i)]));
  }
  return out;
}

TEST(SetFreq, WorkedExamplesToTheByte) {
  struct Case {
    double mhz;
    const char* bytes;
    std::string frame;
  } cases[] = {
      {145.5, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x50, 0x45, 0x01, 0xFD})},
      {145.5, "4", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x50, 0x45, 0xFD})},
      {14.25, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x25, 0x14, 0x00, 0xFD})},
      {14.25, "4", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x25, 0x14, 0xFD})},
      {1296.1, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x10, 0x96, 0x12, 0xFD})},
      {1296.1, "4", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x10, 0x96, 0xFD})},
      {144.0, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x50, 0x00, 0x00, 0x44, 0x01, 0xFD})},
      {145.0, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x00, 0x45, 0x01, 0xFD})},
      {14.195, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x50, 0x50, 0x19, 0x14, 0x00, 0xFD})},
      {0.0, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x00, 0x00, 0x00, 0xFD})},
      {9999.9, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x50, 0x00, 0x90, 0x99, 0x99, 0xFD})},
      {10000.0, "5", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x00, 0x00, 0xA0, 0xFD})},
  };
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.w->PopupFreqBytes.SetListIndex(std::string(c.bytes) == "5" ? 1 : 0);
    h.w->SetFreq(8, c.mhz);
    EXPECT_EQ(HexText(Queued(*h.w)), HexText(c.frame)) << c.mhz << " MHz, " << c.bytes << " bytes";
  }
}

TEST(SetFreq, AbsurdFrequenciesStillMakeAFrameOfFullLength) {
  for (double mhz : {16000.0, -1.0, 1e300, -1e300}) {
    WindowHarness h;
    h.Start();
    h.w->PopupFreqBytes.SetListIndex(1);
    h.w->SetFreq(8, mhz);
    EXPECT_EQ(Queued(*h.w).size(), 11u) << mhz;
  }
}

TEST(Convert, PairToPackedDecimalByte) {
  WindowHarness h;
  h.BuildOnly();
  const std::pair<i64, int> cases[] = {{49, 0x49}, {0, 0x00}, {99, 0x99}, {100, 0xA0}, {160, 0x00}};
  for (auto [pair, byte] : cases) EXPECT_EQ(AscB(h.w->Convert(pair)), byte) << pair;
}

TEST(Requests, CarryTheRadioAndTheControllerAddress) {
  WindowHarness h;
  h.Start();
  h.w->ReqFreq(8);
  h.w->ReqMode(0x94);
  h.w->OurIDEditFieldHex.SetText("");
  h.w->ReqFreq(256);  // the last address of a search: its byte is the low eight bits
  EXPECT_EQ(Queued(*h.w), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD, 0xFE, 0xFE, 0x94, 0xE0, 0x04,
                                 0xFD, 0xFE, 0xFE, 0x00, 0x00, 0x03, 0xFD}));
}

TEST(SetMode, SendsBothPopupsAndSsbAsFmWithFilterZero) {
  struct Case {
    i64 modeRow;
    i64 filterRow;
    int modeByte;
    int filterByte;
  } cases[] = {
      {1, 1, 0x01, 0x02}, {9, 0, 0x0B, 0x01}, {10, 2, 0x05, 0x00},
      {0, 0, 0x00, 0x01}, {8, 2, 0x08, 0x03}, {5, 1, 0x05, 0x02},
  };
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.w->PopupMode.Change = nullptr;
    h.w->PopupFilter.Change = nullptr;
    h.w->PopupMode.SetListIndex(c.modeRow);
    h.w->PopupFilter.SetListIndex(c.filterRow);
    h.w->SetMode();
    EXPECT_EQ(Queued(*h.w), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x06, c.modeByte, c.filterByte, 0xFD}))
        << c.modeRow << "/" << c.filterRow;
    EXPECT_EQ(h.w->PopupFilter.ListIndex(), c.filterRow);
  }
}

// Every frame reads the controller field at the moment it is built; SetFreq, ReqFreq and ReqMode
// take the radio as given, SetMode reads the Radio ID field itself.
TEST(Frames, TakeTheAddressesOfTheMomentFromTheFieldsAndArguments) {
  WindowHarness h;
  h.Start();
  h.w->OurIDEditFieldHex.SetText("a1");
  h.w->EditRadioIDHex.SetText("5c");
  h.w->PopupFreqBytes.SetListIndex(0);
  h.w->SetFreq(0x33, 14.25);
  h.w->ReqMode(0x44);
  h.w->OurIDEditFieldHex.SetText("E2");
  h.w->PopupMode.Change = nullptr;
  h.w->PopupMode.SetListIndex(1);
  h.w->SetMode();
  h.w->ReqFreq(0x27);
  EXPECT_EQ(HexText(Queued(*h.w)),
            HexText(Bytes({0xFE, 0xFE, 0x33, 0xA1, 0x05, 0x49, 0x00, 0x25, 0x14, 0xFD,  //
                           0xFE, 0xFE, 0x44, 0xA1, 0x04, 0xFD,                          //
                           0xFE, 0xFE, 0x5C, 0xE2, 0x06, 0x01, 0x01, 0xFD,              //
                           0xFE, 0xFE, 0x27, 0xE2, 0x03, 0xFD})));
}

TEST(Frames, AddressBytesGoOutAsTheyStandWithNoEscaping) {
  WindowHarness h;
  h.Start();
  h.w->OurIDEditFieldHex.SetText("fd");
  h.w->ReqFreq(0xFE);
  EXPECT_EQ(Queued(*h.w), Bytes({0xFE, 0xFE, 0xFE, 0xFD, 0x03, 0xFD}));
}

}  // namespace
}  // namespace tarn::test

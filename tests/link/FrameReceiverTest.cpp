#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Each stream goes through ParseByte with a search in progress, so that every frame accepted for
// the controller shows as gotFreqReply and nothing else changes.
struct StreamCase {
  const char* name;
  std::string bytes;
  bool accepted;
  i64 cmd;
  i64 length;
  bool ackNak;
  bool jam;
};

class FrameReceiverStreams : public ::testing::TestWithParam<StreamCase> {};

TEST_P(FrameReceiverStreams, DecidesAtTheEndByteWhetherTheFrameIsForUs) {
  const StreamCase& c = GetParam();
  WindowHarness h;
  h.Start();
  h.w->pollRadios = false;
  h.Parse(c.bytes);
  EXPECT_EQ(h.w->gotFreqReply, c.accepted);
  EXPECT_EQ(h.w->parseCmd, c.cmd);
  EXPECT_EQ(h.w->parseMsgLength, c.length);
  EXPECT_EQ(h.w->gotAckNak, c.ackNak);
  EXPECT_EQ(h.w->StaticJamming.Visible(), c.jam);
  EXPECT_EQ(h.w->parseState, 0);
}

INSTANTIATE_TEST_SUITE_P(
    EdgeCases, FrameReceiverStreams,
    ::testing::Values(
        StreamCase{"FrequencyReply",
                   Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD}), true,
                   3, 5, false, false},
        StreamCase{"OwnFrameEchoed", Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}), false, 3, 0,
                   false, false},
        StreamCase{"BrokenPreambleRestarts",
                   Bytes({0xFE, 0x00, 0xFE, 0xFE, 0xE0, 0x08, 0x04, 0x01, 0xFD}), true, 4, 1, false,
                   false},
        StreamCase{"ThirdPreambleIsTheToByte", Bytes({0xFE, 0xFE, 0xFE, 0xE0, 0x08, 0x01, 0xFD}),
                   false, 8, 1, false, false},
        StreamCase{"EndByteAsCommandSwallowsTheNextFrame",
                   Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFD, 0xFE, 0xFE, 0xE0, 0x08, 0x03, 0xFD}), true,
                   0xFD, 5, false, false},
        StreamCase{"JamInDataAbandonsTheFrame",
                   Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0xFC, 0x00, 0x50, 0xFD}), false, 3, 1,
                   false, true},
        StreamCase{"JamAsToByte", Bytes({0xFE, 0xFE, 0xFC, 0x08, 0x03, 0xFD}), false, 0, 0, false,
                   true},
        StreamCase{"JamAsFromByte", Bytes({0xFE, 0xFE, 0xE0, 0xFC, 0x03, 0xFD}), false, 0, 0, false,
                   true},
        StreamCase{"JamAsCommand", Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFC, 0x00, 0xFD}), false, 0, 0,
                   false, true},
        StreamCase{"AckAsCommand", Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD}), true, 0xFB, 0, true,
                   false},
        StreamCase{"AckAsDataIsStoredToo",
                   Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0xFB, 0x00, 0x50, 0x45, 0x01, 0xFD}), true,
                   3, 5, true, false},
        StreamCase{"PreamblesInDataAreData",
                   Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0xFE, 0xFE, 0x45, 0xFD}), true, 3, 4,
                   false, false},
        StreamCase{"NakOutsideAFrame", Bytes({0xFA}), false, 0, 0, true, false},
        StreamCase{"AckAfterOnePreamble", Bytes({0xFE, 0xFB, 0xFE, 0xFE, 0xE0, 0x08, 0x06, 0xFD}),
                   true, 6, 0, true, false},
        StreamCase{"FrameForAnotherAddress", Bytes({0xFE, 0xFE, 0x94, 0x08, 0x03, 0x01, 0xFD}),
                   false, 3, 1, false, false}),
    [](const ::testing::TestParamInfo<StreamCase>& info) { return info.param.name; });

TEST(FrameReceiver, StoresDataBytesFromIndexZeroAndNeverClearsTheRest) {
  WindowHarness h;
  h.Start();
  h.Parse(Bytes({0xFE, 0xFE, 0x94, 0x08, 0x03, 0x11, 0x22, 0x33, 0xFD}));
  h.Parse(Bytes({0xFE, 0xFE, 0x94, 0x08, 0x04, 0x44, 0xFD}));
  EXPECT_EQ(h.w->parseMsg[0], 0x44);
  EXPECT_EQ(h.w->parseMsg[1], 0x22);
  EXPECT_EQ(h.w->parseToID, 0x94);
  EXPECT_EQ(h.w->parseFromID, 0x08);
}

TEST(FrameReceiver, ControllerAddressIsReadAtTheEndByte) {
  WindowHarness h;
  h.Start();
  h.w->pollRadios = false;
  h.Parse(Bytes({0xFE, 0xFE, 0x94, 0x08, 0x03}));
  h.w->OurIDEditFieldHex.SetText("94");
  h.Parse(Bytes({0xFD}));
  EXPECT_TRUE(h.w->gotFreqReply);
}

TEST(FrameReceiver, EmptyControllerAddressAcceptsFramesToZero) {
  WindowHarness h;
  h.Start();
  h.w->pollRadios = false;
  h.w->OurIDEditFieldHex.SetText("");
  h.Parse(Bytes({0xFE, 0xFE, 0x00, 0x08, 0x03, 0xFD}));
  EXPECT_TRUE(h.w->gotFreqReply);
}

TEST(FrameReceiver, DataBeyondTheArrayIsDroppedAndTheFrameStillEnds) {
  for (int dataBytes : {256, 257, 258, 300, 5000}) {
    WindowHarness h;
    h.Start();
    h.Parse(Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03}));
    for (int i = 0; i < dataBytes; ++i) h.w->ParseByte(i % 2 ? 0x01 : 0x00);
    EXPECT_EQ(h.w->parseMsgLength, std::min(dataBytes, 257)) << dataBytes;
    h.w->ParseByte(0xFD);
    EXPECT_EQ(h.w->parseState, 0) << dataBytes;
    EXPECT_NE(h.w->FreqDisplay.Text(), "-") << dataBytes;  // it reached the decoder
  }
  WindowHarness h;
  h.Start();
  h.Parse(Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03}));
  for (int i = 0; i < 400; ++i) h.w->ParseByte(0x00);
  h.w->ParseByte(0xFC);
  EXPECT_EQ(h.w->parseState, 0);
  EXPECT_TRUE(h.w->StaticJamming.Visible());
}

TEST(JamIndicator, ShowsAtTheJamByteAndHidesOnePeriodLater) {
  WindowHarness h;
  h.Start();
  h.clock.AdvanceBy(100);
  h.Parse(Bytes({0xFC}));
  EXPECT_TRUE(h.w->StaticJamming.Visible());
  EXPECT_EQ(h.w->JammerTimer.Mode(), 1);
  h.clock.AdvanceBy(999);
  EXPECT_TRUE(h.w->StaticJamming.Visible());
  h.clock.AdvanceBy(1);
  EXPECT_FALSE(h.w->StaticJamming.Visible());
  EXPECT_EQ(h.w->JammerTimer.Mode(), 0);
}

TEST(JamIndicator, ASecondJamByteKeepsItUpAFullPeriodFromThen) {
  WindowHarness h;
  h.Start();
  h.Parse(Bytes({0xFC}));
  h.clock.AdvanceBy(800);
  h.Parse(Bytes({0xFC}));
  h.clock.AdvanceBy(800);
  EXPECT_TRUE(h.w->StaticJamming.Visible());
  h.clock.AdvanceBy(200);
  EXPECT_FALSE(h.w->StaticJamming.Visible());
}

}  // namespace
}  // namespace tarn::test

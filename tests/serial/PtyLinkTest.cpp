// The serial transport on a real pseudo-terminal with the simulated radio on the other end.
#include <gtest/gtest.h>

#include "support/PtyHarness.h"

namespace tarn::test {
namespace {

class PtyLink : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->ReqTimer.SetMode(0);  // only what the test sends
  }
  PtyHarness h;
};

TEST_F(PtyLink, AFrequencyRequestIsSentEchoedAnsweredAndShown) {
  h.w->ShowDataCheck.SetValue(true);
  h.w->ReqFreq(8);
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() == "145500"; }, 2000));
  // The monitor shows our own frame coming back on the one-wire bus, then the reply.
  EXPECT_EQ(h.w->EditField1.Text(), "FE_FE_08_E0_03_FD_FE_FE_E0_08_03_00_00_50_45_01_FD_");
  const auto frames = h.radio->WithBus([](sim::SimBus& bus) { return bus.Frames(); });
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].to, 0x08);
  EXPECT_EQ(frames[0].from, 0xE0);
  EXPECT_EQ(frames[0].command, 0x03);
}

TEST_F(PtyLink, ASetFrequencyIsReadBack) {
  h.w->PopupFreqBytes.SetListIndex(1);
  h.w->SetFreq(8, 7.1);
  h.w->ReqFreq(8);
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() != "-"; }, 2000));
  EXPECT_EQ(h.w->FreqDisplay.Text(), "7100.049");
  EXPECT_EQ(h.RadioNow().frequencyHz, 7'100'049u);
  EXPECT_TRUE(h.w->gotAckNak);
}

TEST_F(PtyLink, ReopeningAtAnotherSpeedKeepsTheRingAndTheReceiver) {
  h.w->ReqMode(8);
  h.w->BaudPopup.SetListIndex(12);  // 38400: the frame still waits in the ring
  EXPECT_NE(h.w->serialBufHead, h.w->serialBufTail);
  ASSERT_TRUE(h.RunUntil([&] { return h.w->ModeDisplay.Text() == "FM"; }, 2000));
  EXPECT_EQ(h.w->FilterDisplay.Text(), "WIDE");
  EXPECT_TRUE(h.messages.shown.empty());
}

TEST_F(PtyLink, APortThatDoesNotExistReportsTheMessageAndTheProgramRuns) {
  h.ports.Ports().push_back({"gone", "/dev/tarnline-no-such-port"});
  h.w->SerialPopup.AddRow("gone");
  h.w->SerialPopup.SetListIndex(1);
  EXPECT_EQ(h.messages.shown, (std::vector<std::string>{"Failure to open serial  port!!"}));
  h.w->ReqFreq(8);
  h.Run(500);
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
  h.w->SerialPopup.SetListIndex(0);  // back to the radio
  h.w->ReqFreq(8);
  EXPECT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() == "145500"; }, 2000));
}

TEST_F(PtyLink, APulledCableLeavesTheProgramRunning) {
  h.w->ReqFreq(8);
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() == "145500"; }, 2000));
  h.radio->Hangup();
  h.w->ReqTimer.SetMode(2);
  h.Run(5000);  // reads come back empty and frames leave the ring without blocking
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_LE((h.w->serialBufHead - h.w->serialBufTail + 10000) % 10000, 6);
  const auto gone = std::count_if(h.log.lines.begin(), h.log.lines.end(), [](const std::string& l) {
    return l.find("is gone") != std::string::npos;
  });
  EXPECT_EQ(gone, 1);
  EXPECT_EQ(h.messages.statuses.size(), 1u);  // told once, not per read
  EXPECT_TRUE(h.messages.shown.empty());
}

}  // namespace
}  // namespace tarn::test

namespace tarn::test {
namespace {

TEST(PtyLine, EveryBaudRowIsSetOnARealLineAndTheRadioStillAnswers) {
  PtyHarness h;
  h.Start();
  h.w->ReqTimer.SetMode(0);
  for (int row = 0; row < 14; ++row) {
    h.w->BaudPopup.SetListIndex(row);
    h.w->FreqDisplay.SetText("-");
    h.w->ReqFreq(8);
    EXPECT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() == "145500"; }, 2000)) << row;
  }
  for (const std::string& line : h.log.lines)
    EXPECT_EQ(line.find("cannot"), std::string::npos) << line;
  EXPECT_TRUE(h.messages.shown.empty());
}

}  // namespace
}  // namespace tarn::test

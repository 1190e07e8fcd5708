#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

class Tuning : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->ReqTimer.SetMode(0);
    h.w->PopupFreqBytes.SetListIndex(1);
  }
  // The frame queued by the last action, decoded back to MHz by the radio's own rule.
  std::string LastFrame() {
    std::string out;
    for (i64 i = h.w->serialBufTail; i != h.w->serialBufHead;
         i = (i + 1) % IcomWindow::kRingPositions) {
      out.push_back(static_cast<char>(h.w->serialBuf[static_cast<std::size_t>(i)]));
    }
    h.w->serialBufTail = h.w->serialBufHead;
    return out;
  }
  std::string FrameFor(double mhz) {
    h.w->SetFreq(8, mhz);
    return LastFrame();
  }
  WindowHarness h;
};

TEST_F(Tuning, SetTheFreqTakesTheUnitFromThePopup) {
  struct Case {
    const char* text;
    i64 unitRow;
    double mhz;
  } cases[] = {{"7100", 0, 7.1}, {"7.1", 1, 7.1}, {"1000", 0, 1.0}, {"", 0, 0.0},
               {"", 1, 0.0},     {"abc", 0, 0.0}, {"abc", 1, 0.0},  {"145.5 MHz", 1, 145.5}};
  for (const auto& c : cases) {
    h.w->EditFreq.SetText(c.text);
    h.w->kHzPopup.SetListIndex(c.unitRow);
    h.w->SetTheFreq();
    const std::string sent = LastFrame();
    EXPECT_EQ(HexText(sent), HexText(FrameFor(c.mhz))) << c.text << " row " << c.unitRow;
  }
}

TEST_F(Tuning, OnlyTheLineEndKeySendsAndNoKeyIsKept) {
  h.w->EditFreq.SetText("14250");
  EXPECT_FALSE(h.w->EditFreq.PressKey("a"));
  EXPECT_FALSE(h.w->EditFreq.PressKey("\r"));
  EXPECT_EQ(LastFrame(), "");
  EXPECT_FALSE(h.w->EditFreq.PressKey(EndOfLine));
  const std::string sent = LastFrame();
  EXPECT_EQ(HexText(sent), HexText(FrameFor(14.25)));
  EXPECT_EQ(h.w->EditFreq.Text(), "14250");  // sending leaves the text
}

TEST_F(Tuning, TheSetButtonSendsTheSameFrame) {
  h.w->EditFreq.SetText("7100");
  h.w->SetFreq1.Push();
  const std::string sent = LastFrame();
  EXPECT_EQ(HexText(sent), HexText(FrameFor(7.1)));
}

TEST_F(Tuning, EitherPopupSendsModeAndFilterTogether) {
  h.w->PopupMode.SetListIndex(10);  // SSB
  EXPECT_EQ(LastFrame(), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x06, 0x05, 0x00, 0xFD}));
  h.w->PopupFilter.SetListIndex(2);
  EXPECT_EQ(LastFrame(), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x06, 0x05, 0x00, 0xFD}));
  EXPECT_EQ(h.w->PopupFilter.Text(), "Narrow");
  h.w->PopupMode.SetListIndex(1);
  EXPECT_EQ(LastFrame(), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x06, 0x01, 0x03, 0xFD}));
}

// The display shows what the radio reports, in kHz, whatever unit the entry was typed in.
TEST_F(Tuning, AFrequencyEnteredInMHzIsShownInKHzAfterPolling) {
  // A radio that tunes in 100 Hz steps (it drops the Hz pair of a set frame) and reports its
  // frequency when polled.
  std::string tuned = Bytes({0x00, 0x00, 0x00, 0x00, 0x00});
  h.Line().onWrite = [&tuned](MemoryLine& l, const std::string& w) {
    const auto command = static_cast<unsigned char>(w[4]);
    if (command == 0x05) tuned = '\0' + w.substr(6, 4);
    if (command == 0x03) l.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03}) + tuned + '\xFD';
  };
  h.w->kHzPopup.SetListIndex(1);
  EXPECT_EQ(LastFrame(), "");  // changing the unit sends nothing
  h.w->EditFreq.SetText("7.1");
  h.w->SetFreq1.Push();
  h.clock.AdvanceBy(100);
  EXPECT_EQ(tuned, Bytes({0x00, 0x00, 0x10, 0x07, 0x00}));
  EXPECT_EQ(h.w->FreqDisplay.Text(), "-");  // sending alone leaves the display
  h.w->ReqTimer.SetMode(2);
  h.clock.AdvanceBy(2000);
  EXPECT_EQ(h.w->FreqDisplay.Text(), "7100");
}

TEST_F(Tuning, SendingWorksDuringASearch) {
  h.w->FindRadiosButton.Push();
  h.w->EditFreq.SetText("7100");
  h.w->SetTheFreq();
  const std::string sent = LastFrame();
  EXPECT_EQ(HexText(sent), HexText(FrameFor(7.1)));
}

}  // namespace
}  // namespace tarn::test

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

class ReceivePump : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->ReqTimer.SetMode(0);
  }
  TempFolder dir;  // where DEBUG.TXT goes
  WindowHarness h{1, dir.Path()};
};

TEST_F(ReceivePump, ParsesEveryByteThenShowsTheReadAsHex) {
  h.w->ShowDataCheck.SetValue(true);
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD});
  std::string freqWhenMonitorChanged;
  h.w->EditField1.viewChanged = [&] { freqWhenMonitorChanged = h.w->FreqDisplay.Text(); };
  h.w->CheckSerial();
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_EQ(freqWhenMonitorChanged, "145500");  // the frame was decoded before the monitor moved
  EXPECT_EQ(h.w->EditField1.Text(), "FE_FE_E0_08_03_00_00_50_45_01_FD_");
}

TEST_F(ReceivePump, AnEmptyReadTouchesNothing) {
  h.w->ShowDataCheck.SetValue(true);
  h.w->EditField1.SetText(std::string(700, 'x'));
  h.w->EditField1.SetSelStart(3);
  h.w->CheckSerial();
  EXPECT_EQ(h.w->EditField1.Text().size(), 700u);
  EXPECT_EQ(h.w->EditField1.SelStart(), 3);
}

TEST_F(ReceivePump, MonitorKeepsTheLast500OldCharactersBeforeAppending) {
  struct Case {
    std::size_t before;
    std::size_t after;
  } cases[] = {{500, 503}, {501, 503}, {620, 503}, {0, 3}};
  for (const auto& c : cases) {
    std::string old;
    for (std::size_t i = 0; i < c.before; ++i) old.push_back(static_cast<char>('a' + i % 26));
    h.w->EditField1.SetText(old);
    h.w->ShowDataCheck.SetValue(true);
    h.Line().incoming = Bytes({0x0A});
    h.w->CheckSerial();
    const std::string& now = h.w->EditField1.Text();
    EXPECT_EQ(now.size(), c.after) << c.before;
    EXPECT_EQ(now.substr(now.size() - 3), "0A_");
    if (c.before > 500) {
      EXPECT_EQ(now.substr(0, 497), old.substr(c.before - 500, 497));
    }
  }
}

TEST_F(ReceivePump, FourBytesOnASixHundredTwentyCharacterMonitorEndAt512) {
  h.w->ShowDataCheck.SetValue(true);
  h.w->EditField1.SetText(std::string(620, '.'));
  h.Line().incoming = Bytes({0x00, 0xFF, 0xA0, 0x01});
  h.w->CheckSerial();
  EXPECT_EQ(h.w->EditField1.Text().size(), 512u);
  EXPECT_EQ(h.w->EditField1.Text().substr(500), "00_FF_A0_01_");
}

TEST_F(ReceivePump, WithTheMonitorOffBytesAreStillParsedAndTheMonitorStaysAsItIs) {
  h.w->EditField1.SetText(std::string(800, '.'));
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x04, 0x03, 0x01, 0xFD});
  h.w->CheckSerial();
  EXPECT_EQ(h.w->ModeDisplay.Text(), "CW");
  EXPECT_EQ(h.w->EditField1.Text().size(), 800u);
  h.w->ShowDataCheck.SetValue(true);
  h.Line().incoming = Bytes({0x42});
  h.w->CheckSerial();
  EXPECT_EQ(h.w->EditField1.Text().substr(500), "42_");
}

// Each read takes what has arrived since the one before, so bytes that arrive between the reads of
// one tick reach the monitor as separate appends, and an empty read still counts as one of the
// three.
TEST_F(ReceivePump, ATickMakesThreeReads) {
  struct Case {
    std::deque<std::string> arrivals;
    std::string monitor;
    int appends;
  } cases[] = {
      {{Bytes({0x01}), Bytes({0x02}), Bytes({0x03}), Bytes({0x04})}, "01_02_03_", 3},
      {{Bytes({0x01}), "", Bytes({0x02}), Bytes({0x03})}, "01_02_", 2},
  };
  int appends = 0;  // outlives the loop: the counter stays attached to the field until the end
  h.w->EditField1.viewChanged = [&appends] { ++appends; };
  for (const auto& c : cases) {
    h.w->ShowDataCheck.SetValue(true);
    h.w->EditField1.SetText("");
    appends = 0;
    h.Line().arrivals = c.arrivals;
    h.w->Timer1_Action(h.w->Timer1);
    EXPECT_EQ(h.w->EditField1.Text(), c.monitor) << c.monitor;
    EXPECT_EQ(appends, c.appends) << c.monitor;
    EXPECT_EQ(h.Line().arrivals.size(), 1u) << c.monitor;  // the last one waits for the next tick
  }
  h.w->EditField1.viewChanged = nullptr;
}

TEST_F(ReceivePump, AnEmptyReadLeavesTheDebugFileAlone) {
  h.w->DebugCheckBox.SetValue(true);
  h.w->ShowDataCheck.SetValue(true);
  std::size_t logged = h.log.lines.size();
  h.w->Timer1_Action(h.w->Timer1);
  EXPECT_FALSE(dir.Exists("DEBUG.TXT"));  // not even created empty
  EXPECT_EQ(h.log.lines.size(), logged);

  h.Line().incoming = Bytes({0x01});
  h.w->CheckSerial();
  ASSERT_EQ(dir.Read("DEBUG.TXT"), "01_");
  logged = h.log.lines.size();
  h.w->Timer1_Action(h.w->Timer1);
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "01_");
  EXPECT_EQ(h.log.lines.size(), logged);  // nor is an empty text logged
}

TEST_F(ReceivePump, AFrameCutAcrossReadsIsStillOneFrame) {
  const std::string frame = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x25, 0x14, 0xFD});
  for (std::size_t cut = 1; cut < frame.size(); ++cut) {
    h.w->FreqDisplay.SetText("-");
    h.Line().incoming = frame.substr(0, cut);
    h.w->CheckSerial();
    EXPECT_EQ(h.w->FreqDisplay.Text(), "-") << cut;
    h.Line().incoming = frame.substr(cut);
    h.w->CheckSerial();
    EXPECT_EQ(h.w->FreqDisplay.Text(), "14250") << cut;
  }
}

}  // namespace
}  // namespace tarn::test

// The radio operations end to end on a real pseudo-terminal with the simulated radio.
#include <gtest/gtest.h>

#include "support/PtyHarness.h"
#include "support/TempFolder.h"

namespace tarn::test {
namespace {

TEST(PtyOperations, PollingShowsTheRadioAndSettingsComeBackThroughIt) {
  PtyHarness h;
  h.Start();
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FilterDisplay.Text() != "-"; }, 5000));
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_EQ(h.w->ModeDisplay.Text(), "FM");
  EXPECT_EQ(h.w->FilterDisplay.Text(), "WIDE");

  h.w->EditFreq.SetText("14250");
  h.w->EditFreq.PressKey(EndOfLine);
  h.w->PopupFilter.SetListIndex(2);  // sends mode row 0 (LSB) with filter narrow
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FilterDisplay.Text() == "NARROW"; }, 5000));
  ASSERT_TRUE(h.RunUntil([&] { return h.w->FreqDisplay.Text() == "14250.049"; }, 5000));
  EXPECT_EQ(h.w->ModeDisplay.Text(), "LSB");
}

class PtyScanList : public ::testing::Test {
 protected:
  void Play(const std::string& text, PtyHarness& h) {
    h.chooser.next = dir.File("list.txt");
    dir.Write("list.txt", text);
    h.w->PopupFreqBytes.SetListIndex(1);
    EXPECT_FALSE(h.w->FileScanList_Action());
    EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
  }
  static std::vector<std::uint64_t> SetFrequencies(PtyHarness& h) {
    return h.radio->WithBus([](sim::SimBus& bus) {
      std::vector<std::uint64_t> hz;
      for (const auto& f : bus.Frames()) {
        if (f.command != 0x05) continue;
        std::uint64_t v = 0, scale = 1;
        for (unsigned char b : f.data) v += ((b >> 4) * 10u + (b & 15u)) * scale, scale *= 100;
        hz.push_back(v);
      }
      return hz;
    });
  }
  TempFolder dir;
};

TEST_F(PtyScanList, EveryLineReachesTheRadioInOrderAndARefusedLineGoesOn) {
  PtyHarness h;
  h.Start();
  Play("145.5\n7.1\n5000\n14.25\n", h);  // 5000 MHz is beyond the radio: refused with FA
  EXPECT_EQ(SetFrequencies(h),
            (std::vector<std::uint64_t>{145'500'049, 7'100'049, 5'000'000'049, 14'250'049}));
  EXPECT_EQ(h.RadioNow().frequencyHz, 14'250'049u);
}

TEST_F(PtyScanList, AnEmptyFileSendsNothing) {
  PtyHarness h;
  h.Start();
  h.w->ReqTimer.SetMode(0);
  Play("", h);
  EXPECT_TRUE(SetFrequencies(h).empty());
}

TEST_F(PtyScanList, ARadioThatNeverAnswersEndsTheRunWithPollingBack) {
  sim::BusOptions silent;
  silent.silent = true;
  PtyHarness h(silent);
  h.Start();
  Play("1\n2\n3\n4\n5\n", h);
  EXPECT_EQ(SetFrequencies(h).size(), 3u);
  h.Run(2100);
  const auto frames = h.radio->WithBus([](sim::SimBus& bus) { return bus.Frames(); });
  ASSERT_FALSE(frames.empty());
  EXPECT_NE(frames.back().command, 0x05);  // a polling request came after the run
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// The pump and the transmit ring sleep while idle. One random script of the window runs on timers
// that tick at every instant and again on timers that sleep: every write, every change on the
// window, the log and the debug file must come out the same, at the same virtual millisecond.
#include <gtest/gtest.h>

#include <random>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

std::string Trace(bool ticksAlways) {
  TempFolder dir;
  dir.Write("list.txt", "145.5\n7.1\n");
  WindowHarness h(1, dir.Path());
  h.clock.ticksAlways = ticksAlways;
  h.chooser.next = dir.File("list.txt");
  std::string trace, shown;
  MemoryLine& line = h.Line();
  line.onWrite = [&](MemoryLine&, const std::string& written) {
    trace += Str(h.clock.NowMs()) + " wrote " + written + "\n";
    if (written[4] == 0x05) line.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
  };
  h.Start();
  IcomWindow& w = *h.w;
  std::mt19937 random(2024);
  for (i64 t = 1; t <= 40'000; ++t) {
    const int r = static_cast<int>(random() % 6000);
    if (r < 10) line.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 3, 0, 0, r * 16, 0x45, 1, 0xFD});
    if (r >= 10 && r < 16) line.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 4, r - 10, 1, 0xFD});
    if (r == 20) w.EditUpdateRate.SetText(Str(static_cast<i64>(random() % 21) * 100));
    if (r == 21) w.ShowDataCheck.SetValue(!w.ShowDataCheck.Value());
    if (r == 22) w.DebugCheckBox.SetValue(!w.DebugCheckBox.Value());
    if (r == 23) w.BaudPopup.SetListIndex(random() % 14);
    if (r >= 24 && r < 34) w.PopupMode.SetListIndex(r - 24);  // a frame queued between ticks
    if (t == 20'000) w.ChooseMenuItem("FileScanList");
    if (t == 25'000) w.FindRadiosButton.Push();
    if (t == 35'123) line.lost = true;
    h.clock.AdvanceBy(1);
    const std::string now = w.FreqDisplay.Text() + '|' + w.ModeDisplay.Text() + '|' +
                            w.StaticFindRadios.Text() + '|' + w.EditField1.Text() + '|' +
                            h.messages.Status() + '|' + std::to_string(h.log.lines.size()) + '\n';
    if (now != shown) trace += Str(h.clock.NowMs()) + " shows " + (shown = now);
  }
  return trace + dir.Read("DEBUG.TXT");
}

TEST(SleepingTimers, ARandomScriptRunsTickForTickAsWithTimersThatNeverSleep) {
  EXPECT_EQ(Trace(false), Trace(true));
}

// Where a woken timer armed at 0 with a period of 10 fires, by when it woke and when it last
// ticked.
TEST(SleepingTimers, AWokenTimerFiresAtTheNextInstantOfItsRhythmAndNeverTwiceOnOne) {
  EXPECT_EQ(NextInstant(0, 10, 25, 20), 30);
  EXPECT_EQ(NextInstant(0, 10, 30, 20), 30);
  EXPECT_EQ(NextInstant(0, 10, 30, 30), 40);
}

}  // namespace
}  // namespace tarn::test

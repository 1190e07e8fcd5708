// SPDX-License-Identifier: GPL-3.0-or-later
// A scan run end to end on a real pseudo-terminal with the simulated radio: the wait for each
// answer on a real line.
#include <gtest/gtest.h>

#include "support/PtyHarness.h"
#include "support/TempFolder.h"

namespace tarn::test {
namespace {

TEST(PtyScanList, EveryLineReachesTheRadioAndARefusedLineGoesOn) {
  PtyHarness h;
  h.Start();
  TempFolder dir;
  dir.Write("list.txt", "7.1\n5000\n14.25\n");  // 5000 MHz is beyond the radio: refused with FA
  h.chooser.next = dir.File("list.txt");
  h.w->PopupFreqBytes.SetListIndex(1);
  EXPECT_FALSE(h.w->FileScanList_Action());
  EXPECT_EQ(h.RadioNow().frequencyHz, 14'250'049u);  // the last line, after the refused one
  EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
}

}  // namespace
}  // namespace tarn::test

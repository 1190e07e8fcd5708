// SPDX-License-Identifier: GPL-3.0-or-later
// A port that appears after start joins the end of Serial Port when the list opens.
#include <gtest/gtest.h>

#include "support/PtyHarness.h"

TEST(PortSelection, APortMadeAfterStartJoinsTheEndAndStaysListedWhenGone) {
  tarn::test::PtyHarness h;
  h.Start();
  tarn::test::PtyHarness later;
  // The first port again, under another name, is not listed twice.
  h.machinePorts = {{"later", later.radio->SlavePath()}, {"again", h.radio->SlavePath()}};
  h.w->SerialPopup.OpenList();
  h.w->SerialPopup.SetListIndex(1);
  later.radio.reset();  // gone: still listed, and choosing it fails as any port does
  h.w->SerialPopup.SetListIndex(1);
  EXPECT_EQ(h.w->SerialPopup.Rows(), (std::vector<std::string>{h.radio->SlavePath(), "later"}));
  EXPECT_EQ(h.messages.shown, std::vector<std::string>{"Failure to open serial  port!!"});
}

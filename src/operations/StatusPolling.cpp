// SPDX-License-Identifier: GPL-3.0-or-later
// Status polling: ReqTimer asks for the frequency on one tick and for the mode on the next. It
// never looks at an answer; the receiver puts answers on the displays.
#include "link/IcomWindow.h"

namespace tarn {

void IcomWindow::ReqTimer_Action(Timer&) {
  if (!FindRadiosButton.Enabled()) return;  // a search runs: the question that is due waits
  if (requestType == 0) {
    ReqFreq(FromHex(EditRadioIDHex.Text()));
    requestType = 1;
  } else if (requestType == 1) {
    ReqMode(FromHex(EditRadioIDHex.Text()));
    requestType = 0;
  } else {
    requestType = 0;
  }
}

// The text is one full cycle (frequency and mode) in milliseconds, so a tick is half of it. A text
// giving a period below 1 ms rests the timer (see Timer) until a usable rate is typed.
void IcomWindow::EditUpdateRate_TextChange(EditField& sender) {
  ReqTimer.SetPeriod(TruncToInt(Val(sender.Text()) / 2.0));
}

void IcomWindow::Event_Open() {
  EditUpdateRate.SetText("2000");
}

}  // namespace tarn

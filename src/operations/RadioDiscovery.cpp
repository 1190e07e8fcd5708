// SPDX-License-Identifier: GPL-3.0-or-later
// Radio discovery: every bus address from 0 up is asked for its frequency, one per tick, and a
// tick reports the address asked by the tick before it if any frame for the controller came in.
// Two idle ticks, 257 requests, no cancel. Polling waits meanwhile (the button is its gate) and
// replies go to gotFreqReply instead of the displays.
#include "link/IcomWindow.h"

namespace tarn {

namespace {
constexpr i64 kSettlingStart = -3;
constexpr i64 kLastAddress = 255;
}  // namespace

void IcomWindow::FindRadiosButton_Action(PushButton& sender) {
  findRadiosState = kSettlingStart;
  pollRadios = false;
  FindRadiosTimer.SetMode(2);
  sender.SetEnabled(false);
}

void IcomWindow::FindRadiosTimer_Action(Timer& sender) {
  ++findRadiosState;
  if (findRadiosState >= 0) {
    if (gotFreqReply && findRadiosState > 0) {
      EditField1.SetSelStart(Utf8Length(EditField1.Text()));
      EditField1.SetSelText(" Found radio at address " + Str(findRadiosState - 1) +
                            std::string(EndOfLine));
    }
    StaticFindRadios.SetText("Looking for radio " + Str(findRadiosState));
    gotFreqReply = false;
    ReqFreq(findRadiosState);
  }
  if (findRadiosState > kLastAddress) {
    findRadiosState = kSettlingStart;
    sender.SetMode(0);
    pollRadios = true;
    FindRadiosButton.SetEnabled(true);
  }
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// Tuning controls: the user's frequency, mode and filter go out as one frame each.
#include "link/IcomWindow.h"

namespace tarn {

void IcomWindow::SetTheFreq() {
  double value = Val(EditFreq.Text());
  if (kHzPopup.ListIndex() == 0) value = value / 1000.0;
  SetFreq(FromHex(EditRadioIDHex.Text()), value);
}

// The line-end key sends; every key, that one too, goes on to the field.
bool IcomWindow::EditFreq_KeyDown(EditField&, std::string_view key) {
  if (key == EndOfLine) SetTheFreq();
  return false;
}

void IcomWindow::SetFreq1_Action(PushButton&) {
  SetTheFreq();
}

void IcomWindow::PopupMode_Change(PopupMenu&) {
  SetMode();
}

void IcomWindow::PopupFilter_Change(PopupMenu&) {
  SetMode();
}

}  // namespace tarn

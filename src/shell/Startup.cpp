// SPDX-License-Identifier: GPL-3.0-or-later
// First values of the link state and the controls.
#include "link/IcomWindow.h"

namespace tarn {

void IcomWindow::init() {
  parseState = 0;
  OurIDEditFieldHex.SetText("e0");
  // Each assignment raises its Change handler, which reopens the port: the last one, at row 8
  // (9600 baud), is the opening that counts.
  SerialPopup.SetListIndex(0);
  BaudPopup.SetListIndex(8);
  serialBufHead = 0;
  serialBufTail = 0;
  pollRadios = true;
}

}  // namespace tarn

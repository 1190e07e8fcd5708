// SPDX-License-Identifier: GPL-3.0-or-later
// The receive pump: every byte the port delivered goes to the frame receiver, then, as hex text,
// to the data monitor and the debug file. The controls are touched once per read, never per byte.
#include "link/IcomWindow.h"

namespace tarn {

void IcomWindow::Timer1_Action(Timer&) {
  CheckSerial();
  CheckSerial();
  CheckSerial();
}

void IcomWindow::CheckSerial() {
  if (!Serial1) return;
  const std::string received = Serial1->ReadAll();
  if (received.empty()) return;
  for (char c : received) ParseByte(static_cast<unsigned char>(c));
  // The hex text is made only where it goes: most reads go to neither box.
  if (!ShowDataCheck.Value() && !DebugCheckBox.Value()) return;
  std::string hex;
  hex.reserve(received.size() * 3);
  for (char c : received) AppendHexText(hex, static_cast<unsigned char>(c));
  if (ShowDataCheck.Value()) {
    // The cut keeps the last 500 characters of the old text; the new text goes on behind them.
    const i64 length = Utf8Length(EditField1.Text());
    if (length > kMonitorKeep) {
      EditField1.SetSelStart(0);
      EditField1.SetSelLength(length - kMonitorKeep);
      EditField1.SetSelText("");
    }
    EditField1.SetSelStart(Utf8Length(EditField1.Text()));
    EditField1.SetSelText(hex);
  }
  if (DebugCheckBox.Value()) AddToDebugFile(hex);
}

}  // namespace tarn

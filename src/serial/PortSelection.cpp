// SPDX-License-Identifier: GPL-3.0-or-later
// Port selection: the choice in the two popups is the connection. Every choice closes the port
// and opens the chosen one afresh at the chosen speed; nothing else opens or closes it.
#include "link/IcomWindow.h"

namespace tarn {

void IcomWindow::SerialPopup_Open(PopupMenu&) {
  Serial1 = std::make_unique<Serial>(services_.serialDriver, services_.log, services_.messages);
  for (i64 i = 0; i <= System.SerialPortCount() - 1; ++i) {
    SerialPopup.AddRow(System.SerialPort(i).Name);
  }
  if (app.ourSerialPort < SerialPopup.ListCount()) {
    SetSerialStuff(app.ourSerialPort, BaudPopup.ListIndex());
  }
}

// Both popups take the port from SerialPopup, whichever of them fired.
void IcomWindow::SerialPopup_Change(PopupMenu&) {
  app.ourSerialPort = SerialPopup.ListIndex();
  if (app.ourSerialPort < SerialPopup.ListCount()) {
    SetSerialStuff(app.ourSerialPort, BaudPopup.ListIndex());
  }
}

// Ports that have appeared since go at the end of the list. The rows already there keep their
// index and text, so a row index is still the index of its port, and App.ourSerialPort stays right.
void IcomWindow::SerialPopup_ListOpening(PopupMenu&) {
  System.ports.Rescan();
  for (i64 i = SerialPopup.ListCount(); i <= System.SerialPortCount() - 1; ++i) {
    SerialPopup.AddRow(System.SerialPort(i).Name);
  }
}

void IcomWindow::BaudPopup_Change(PopupMenu& sender) {
  SerialPopup_Change(sender);
}

// The line settings come after Open, and Reset, which puts them in force, after all of them. The
// transmit ring and the frame receiver are left alone: waiting bytes go out on the new port.
void IcomWindow::SetSerialStuff(i64 port, i64 baud) {
  if (port < 0) return;
  Serial1->Close();
  Serial1->Port = port;
  Serial1->Close();
  Serial1->SerialPort = System.SerialPort(port);
  if (!Serial1->Open()) {
    MsgBox(kOpenFailure);
    return;
  }
  Serial1->Baud = baud;
  Serial1->Bits = 3;
  Serial1->Parity = 0;
  Serial1->Stop = 0;
  Serial1->XON = false;
  Serial1->Reset();
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// First values of the link state and the controls.
#include <utility>

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

// Every control the user or the link changes takes its first value again, without raising its
// event where it holds that value already; the mode popups' frames go with the rest of the ring.
// The ring's old bytes stay, as only the waiting ones are ever read. The timers run from now as
// they ran from the window's start, armed in the order a new window arms them.
void IcomWindow::Restart() {
  for (auto [field, text] : {std::pair{&EditField1, ""},
                             {&OurIDEditFieldHex, "e0"},
                             {&EditRadioIDHex, "8"},
                             {&EditFreq, ""},
                             {&EditUpdateRate, "2000"}}) {
    if (field->Text() != text) field->SetText(text);
    field->SetSelStart(0);
  }
  for (PopupMenu* p : {&kHzPopup, &PopupFreqBytes, &PopupMode, &PopupFilter})
    if (p->ListIndex() != 0) p->SetListIndex(0);
  for (CheckBox* b : {&ShowDataCheck, &DebugCheckBox}) b->SetValue(false);
  for (StaticText* t : {&FreqDisplay, &ModeDisplay, &FilterDisplay, &StaticFindRadios})
    t->SetText("-");
  StaticJamming.SetVisible(false);
  FindRadiosButton.SetEnabled(true);
  parseMsg.fill(0);
  parseState = parseCmd = parseToID = parseFromID = parseMsgLength = 0;
  serialBufHead = serialBufTail = findRadiosState = requestType = 0;
  refusedFrames_ = refusedUntold_ = 0;
  pollRadios = true;
  gotFreqReply = gotAckNak = debugFileFailureTold_ = parseDebugFileFailureTold_ = false;
  for (Timer* t : {&JammerTimer, &FindRadiosTimer})
    if (t->Mode() != 0) t->SetMode(0);
  for (Timer* t : {&Timer1, &Timer2, &ReqTimer}) {
    if (t->Mode() != 2)
      t->SetMode(2);
    else
      services_.clock.Rearm(*t);  // a repeating timer's rhythm starts afresh only this way
  }
  SleepWhenIdle();
}

}  // namespace tarn

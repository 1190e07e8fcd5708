// SPDX-License-Identifier: GPL-3.0-or-later
// The frame receiver: one byte per call, six states.
//
// Every frame is assembled the same way; only at its end byte is it compared with the controller
// address. The jam code and the two answer codes act wherever they stand, in or out of a frame.
#include "link/Civ.h"
#include "link/IcomWindow.h"

namespace tarn {

namespace {

// What each state waits for.
enum ParseState : i64 {
  kWaitPreamble1 = 0,
  kWaitPreamble2 = 1,
  kWaitTo = 2,
  kWaitFrom = 3,
  kWaitCommand = 4,
  kInData = 5,  // data bytes, or the end byte
};

}  // namespace

void IcomWindow::ParseByte(i64 value) {
  if (value == civ::kJam) {
    StaticJamming.SetVisible(true);
    JammerTimer.SetMode(1);
    parseState = kWaitPreamble1;
  }
  if (value == civ::kNak || value == civ::kAck) gotAckNak = true;

  switch (parseState) {
    case kWaitPreamble1:
      if (value == civ::kPreamble) parseState = kWaitPreamble2;
      break;
    case kWaitPreamble2:
      parseState = value == civ::kPreamble ? kWaitTo : kWaitPreamble1;
      break;
    case kWaitTo:
      parseToID = value;
      parseState = kWaitFrom;
      break;
    case kWaitFrom:
      parseFromID = value;
      parseState = kWaitCommand;
      break;
    case kWaitCommand:
      parseCmd = value;
      parseMsgLength = 0;
      parseState = kInData;
      break;
    case kInData:
      if (value == civ::kEnd) {
        EndOfFrame();
      } else {
        StoreDataByte(value);
      }
      break;
    default:
      parseState = kWaitPreamble1;  // unreachable: every path above leaves a named state
      break;
  }
}

// parseMsg holds 257 data bytes. Those after the 257th have no place: they are dropped, and the
// frame goes on, so its end byte and a jam byte still act on it.
void IcomWindow::StoreDataByte(i64 value) {
  if (parseMsgLength > kParseMsgBound) return;
  parseMsg[static_cast<std::size_t>(parseMsgLength)] = value;
  ++parseMsgLength;
}

// The controller address is read afresh at every frame end: an edit of the field counts at once.
void IcomWindow::EndOfFrame() {
  if (FromHex(OurIDEditFieldHex.Text()) == parseToID) ParseMessage();
  parseState = kWaitPreamble1;
}

void IcomWindow::JammerTimer_Action(Timer&) {
  StaticJamming.SetVisible(false);
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// Scan list playback: a text file of frequencies in MHz, one per line, played to the radio line by
// line inside the menu handler. The loop does the timers' work itself (DoSerialOut, CheckSerial)
// and waits for an answer byte, 0xFB or 0xFA alike, before the next line.
//
// The wait is bounded, as a run cannot be cancelled and holds the window: a line unanswered for
// kAnswerTimeout after its frame has left the transmit ring is given up and the run goes on with
// the next line, so one lost answer on a busy bus costs one line; kGiveUpAfter unanswered lines in
// a row end the run, as the radio is then gone or not at that address and going on would freeze the
// window for seconds per line. Between passes the loop sleeps until the port has bytes or kPass has
// passed, so the wait does not spin a core. On every way out the file is closed and polling runs
// again.
#include <chrono>

#include "link/IcomWindow.h"
#include "platform/TextFiles.h"

namespace tarn {

namespace {
constexpr std::chrono::milliseconds kAnswerTimeout{2000};
constexpr std::chrono::milliseconds kPass{5};
constexpr int kGiveUpAfter = 3;
}  // namespace

// True when an answer byte came within the bound. The bound counts from the moment the ring is
// empty: frames queued before the run leave first, and their time on the wire is not the radio's.
bool IcomWindow::WaitForAnswer() {
  if (!Serial1) return false;  // before the window's open events there is no line to wait on
  i64 deadline = services_.clock.NowMs() + kAnswerTimeout.count();
  while (!gotAckNak) {
    DoSerialOut();
    CheckSerial();
    if (gotAckNak) break;
    const i64 now = services_.clock.NowMs();
    if (RingWaiting() > 0) {
      deadline = now + kAnswerTimeout.count();
    } else if (now >= deadline) {
      return false;
    }
    services_.clock.WaitForInput(*Serial1, kPass.count());
  }
  return true;
}

bool IcomWindow::FileScanList_Action() {
  const std::optional<std::string> item = GetOpenFolderItem("TEXT");
  if (!item) return true;
  std::unique_ptr<TextInputStream> stream = TextInputStream::Open(*item);
  if (!stream) return true;
  ReqTimer.SetMode(0);
  int unansweredInARow = 0;
  while (!stream->EndOfFile()) {
    const double frequency = Val(stream->ReadLine());
    gotAckNak = false;
    SetFreq(FromHex(EditRadioIDHex.Text()), frequency);
    if (WaitForAnswer()) {
      unansweredInARow = 0;
      continue;
    }
    System.DebugLog("scan list: no answer for " + Str(frequency) + " MHz");
    if (++unansweredInARow >= kGiveUpAfter) {
      System.DebugLog("scan list: the radio does not answer; run ended");
      break;
    }
  }
  stream->Close();
  ReqTimer.SetMode(2);
  return false;
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// One window serves every input of a fuzz target and is restarted after each: building a window
// costs far more than running an input. On the first inputs and every 4096th, the input also runs
// on a new window, and the fuzzer aborts unless both end alike and the restarted window then
// equals a new one, every property and control alike.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {

// The link state, every control and what went on the line, as text. Of the ring only the waiting
// bytes count: no others are ever read.
inline std::string Snapshot(WindowHarness& h) {
  const IcomWindow& w = *h.w;
  std::ostringstream s;
  const auto all = [&s](const auto& values) {
    for (const auto& v : values) s << v << ',';
  };
  all(std::initializer_list<i64>{
      w.parseState, w.parseCmd, w.parseToID, w.parseFromID, w.parseMsgLength, w.serialBufHead,
      w.serialBufTail, w.findRadiosState, w.requestType, w.RefusedFrames(), w.pollRadios,
      w.gotFreqReply, w.gotAckNak, w.Serial1->IsOpen(), h.app.ourSerialPort});
  for (i64 i = w.serialBufTail; i != w.serialBufHead; i = (i + 1) % IcomWindow::kRingPositions)
    s << w.serialBuf[static_cast<std::size_t>(i)] << ' ';
  all(w.parseMsg), all(w.radioIDs), all(w.radioTypes), all(w.radioNicks), all(w.rwID);
  for (const Control* c : w.Controls()) {
    s << '\n' << c->Name() << ' ' << c->Visible() << c->Enabled() << ' ';
    if (auto* p = dynamic_cast<const PopupMenu*>(c)) s << p->ListIndex() << '/' << p->ListCount();
    if (auto* e = dynamic_cast<const EditField*>(c))
      s << e->Text() << '@' << e->SelStart() << '+' << e->SelLength();
    if (auto* t = dynamic_cast<const StaticText*>(c)) s << t->Text();
    if (auto* b = dynamic_cast<const CheckBox*>(c)) s << b->Value();
    if (auto* t = dynamic_cast<const Timer*>(c))
      s << t->Mode() << '/' << t->Period() << ' ' << t->Asleep();
  }
  s << '\n' << h.Line().incoming << '|';
  all(h.Line().writes);
  return s.str();
}

struct FuzzWindow : WindowHarness {
  explicit FuzzWindow(std::string folder = {}) : WindowHarness(1, std::move(folder)) { Start(); }

  template <class Input>
  void Run(Input&& input) {
    input(*this);
    const bool check = runs++ < 64 || runs % 4096 == 0;
    if (check) Same("after the same input", [&](FuzzWindow& fresh) { input(fresh); });
    if (w->DebugCheckBox.Value()) std::remove((workFolder + "/DEBUG.TXT").c_str());
    w->Restart();
    line.incoming.clear();
    line.writes.clear();
    log.lines.clear();
    chooser.filters.clear();
    if (check) Same("after a restart", [](FuzzWindow&) {});
  }

  template <class Then>
  void Same(const char* when, Then then) {
    FuzzWindow fresh(workFolder);
    then(fresh);
    const std::string mine = Snapshot(*this), theirs = Snapshot(fresh);
    if (mine == theirs) return;
    std::fprintf(stderr, "%s the window differs from a new one:\n%s\n----\n%s\n", when,
                 mine.c_str(), theirs.c_str());
    std::abort();
  }

  MemoryLine& line = Line();
  i64 runs = 0;
};

}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// One window serves every input of a fuzz target and is put back to its started state after each:
// building a window costs far more than running an input. On the first inputs and every 4096th,
// the input also runs on a freshly built window, and the fuzzer aborts unless both end in the same
// state and the reset window then equals a fresh one, every property and control alike.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/WindowHarness.h"

namespace tarn::test {

// The link state, every control and what went on the line, as text.
inline std::string Snapshot(WindowHarness& h) {
  const IcomWindow& w = *h.w;
  std::ostringstream s;
  for (i64 v : {w.parseState, w.parseCmd, w.parseToID, w.parseFromID, w.parseMsgLength,
                w.serialBufHead, w.serialBufTail, w.findRadiosState, w.requestType,
                w.RefusedFrames(), i64{w.pollRadios}, i64{w.gotFreqReply}, i64{w.gotAckNak}})
    s << v << ' ';
  s << '|';
  for (i64 v : w.parseMsg) s << v << ',';
  for (i64 v : w.serialBuf) s << v << ',';
  for (i64 v : w.radioIDs) s << v << ',';
  for (i64 v : w.radioTypes) s << v << ',';
  for (i64 v : w.rwID) s << v << ',';
  for (const std::string& v : w.radioNicks) s << v << ',';
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
  s << "\nline " << w.Serial1->IsOpen() << h.Line().incoming << '|';
  for (const std::string& out : h.Line().writes) s << out << '|';
  return s.str();
}

struct FuzzWindow : WindowHarness {
  explicit FuzzWindow(std::string folder = {}) : WindowHarness(1, std::move(folder)) { Start(); }

  // Back to what Start() leaves, with the clock where it is: every timer runs from now as it ran
  // from the window's start. Only what an input changed is touched, as each touch costs time.
  void Reset() {
    line.incoming.clear();
    line.arrivals.clear();
    if (w->DebugCheckBox.Value()) std::remove((workFolder + "/DEBUG.TXT").c_str());
    if (w->RefusedFrames() > 0) {  // nothing sets the count back: a new window
      w.reset();
      Start();
      armedAt_ = clock.NowMs();
    } else {
      Restore();
    }
    log.lines.clear();
    line.writes.clear();
    chooser.filters.clear();
  }

  void Restore() {
    IcomWindow& v = *w;
    v.ReqTimer.SetMode(0);
    if (v.JammerTimer.Mode() != 0) v.JammerTimer.SetMode(0);
    for (auto [field, text] : {std::pair{&v.EditField1, ""},
                               {&v.OurIDEditFieldHex, "e0"},
                               {&v.EditRadioIDHex, "8"},
                               {&v.EditFreq, ""},
                               {&v.EditUpdateRate, "2000"}}) {
      if (field->Text() != text) field->SetText(text);
      field->SetSelStart(0);
    }
    v.ShowDataCheck.SetValue(false);
    v.DebugCheckBox.SetValue(false);
    v.StaticJamming.SetVisible(false);
    for (StaticText* t : {&v.FreqDisplay, &v.ModeDisplay, &v.FilterDisplay}) t->SetText("-");
    for (PopupMenu* p : {&v.PopupFreqBytes, &v.kHzPopup, &v.PopupMode, &v.PopupFilter})
      if (p->ListIndex() != 0) p->SetListIndex(0);  // the mode popups queue a frame: dropped below
    v.serialBufTail = v.serialBufHead;
    if (!v.Timer1.Asleep() || !v.Timer2.Asleep()) {  // they tick on nothing and fall asleep
      v.Timer1.SetMode(2);
      v.Timer2.SetMode(2);
      clock.AdvanceBy(50);
    }
    // Each frame the window makes is at most 11 bytes: only that much of the ring can be dirty.
    const auto dirty = std::min<std::size_t>(11 * log.Count("send packet"), v.serialBuf.size());
    std::fill_n(v.serialBuf.begin(), dirty, 0);
    v.parseMsg.fill(0);
    v.parseState = v.parseCmd = v.parseToID = v.parseFromID = v.parseMsgLength = 0;
    v.serialBufHead = v.serialBufTail = v.findRadiosState = v.requestType = 0;
    v.pollRadios = true;
    v.gotFreqReply = v.gotAckNak = false;
    // In the order a new window arms them, which decides among timers due at the same instant.
    if (clock.NowMs() != armedAt_ || v.Timer1.Mode() != 2 || v.Timer2.Mode() != 2) {
      for (Timer* t : {&v.Timer1, &v.Timer2}) t->SetMode(0), t->SetMode(2);
    }
    v.ReqTimer.SetMode(2);
    armedAt_ = clock.NowMs();
  }

  template <class Input>
  void Run(Input&& input) {
    input(*this);
    const bool check = runs_ < 64 || runs_ % 4096 == 0;
    ++runs_;
    if (check) {
      FuzzWindow fresh(workFolder);
      input(fresh);
      Same(fresh, "after the same input");
    }
    Reset();
    if (check) {
      FuzzWindow fresh(workFolder);
      Same(fresh, "after a reset");
    }
  }

  void Same(FuzzWindow& fresh, const char* when) {
    const std::string mine = Snapshot(*this), theirs = Snapshot(fresh);
    if (mine == theirs) return;
    std::fprintf(stderr, "reused window differs from a new one %s:\n%s\n----\n%s\n", when,
                 mine.c_str(), theirs.c_str());
    std::abort();
  }

  MemoryLine& line = Line();
  i64 runs_ = 0;
  i64 armedAt_ = 0;
};

// A folder for the trace files in memory (/dev/shm) where the system has one: the inputs need
// them written, not kept. Removed at exit.
inline const std::string& MemoryFolder() {
  static const std::string* path = [] {
    std::string pattern =
        (std::filesystem::is_directory("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                   : std::filesystem::temp_directory_path()) /
        "tarnline-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) std::abort();
    std::atexit([] { std::filesystem::remove_all(MemoryFolder()); });
    return new std::string(pattern);
  }();
  return *path;
}

}  // namespace tarn::test

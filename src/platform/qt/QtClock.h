// SPDX-License-Identifier: GPL-3.0-or-later
// QtClock: the window's timers on Qt's event loop, in real time.
//
// Each Timer gets a QTimer of its own, made when the timer is first armed and kept until the Timer
// goes, and fires by single shots at the instants of its rhythm (NextInstant) since it was last
// armed. A sleeping timer has no shot standing; woken, it gets one for its next instant. A Timer
// must not be destroyed from inside its own Action (the window never does).
//
// A watched port has a socket notifier, off from the moment it wakes its timer until that timer
// sleeps again: the descriptor stays readable until the tick reads it, and a hung-up line would
// stay readable for ever.
#pragma once

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/Timer.h"

namespace tarn {

class QtClock : public Clock {
 public:
  QtClock();
  ~QtClock() override;
  QtClock(const QtClock&) = delete;
  QtClock& operator=(const QtClock&) = delete;

  i64 NowMs() const override;
  void Rearm(Timer& timer) override;
  void Remove(Timer& timer) override;
  // Blocks the thread: no event and no timer is handled meanwhile, as the caller holds the loop.
  bool WaitForInput(Serial& port, i64 maxMs) override;
  void Woken(Timer& timer) override;
  void WakeOnInput(Serial& port, Timer& timer) override;

 private:
  struct Slot {
    std::unique_ptr<QTimer> qt;
    // In nanoseconds, finer than any period: a timer woken just after an instant it slept
    // through waits for the next one, as one that ticked all along would.
    i64 anchor = 0;  // a sleeping timer's instants are anchor + k * Period
    i64 due = 0;     // the instant its single shot stands for
    i64 last = 0;    // its last tick's instant: no instant fires twice
  };
  struct Watch {
    Serial* port;
    Timer* timer;
    std::unique_ptr<QSocketNotifier> notifier;
  };
  Slot& SlotFor(Timer& timer);
  void Tick(Timer& timer, Slot& slot);
  void Schedule(Timer& timer, Slot& slot);
  void Follow(Watch& watch);

  QElapsedTimer started_;
  std::unordered_map<const Timer*, Slot> timers_;
  std::vector<std::unique_ptr<Watch>> watches_;
};

}  // namespace tarn

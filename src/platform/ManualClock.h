// SPDX-License-Identifier: GPL-3.0-or-later
// A virtual-time clock: time moves only when told, and due timers fire in order of their due time
// (timers due at the same moment in the order their due time was set). Tests run minutes of the
// program in microseconds with it.
//
// A sleeping timer's instants pass like any other's, so that its rhythm and its place among timers
// due together stay those of a timer that never sleeps; only its tick is left out. A watched port
// is looked at when a sleeping timer falls due, as an event loop polls its descriptors.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/Timer.h"

namespace tarn {

class ManualClock : public Clock {
 public:
  i64 NowMs() const override { return now_; }
  void Rearm(Timer& timer) override;
  void Remove(Timer& timer) override;
  // Waits for the port in real time, at most `maxMs`; when nothing came, virtual time moves on by
  // `maxMs` (without firing timers: the waiting loop holds the thread).
  bool WaitForInput(Serial& port, i64 maxMs) override;
  void Woken(Timer&) override {}
  void WakeOnInput(Serial& port, Timer& timer) override { watches_.emplace_back(&port, &timer); }

  // Moves time to now + ms, firing every timer that falls due on the way.
  void AdvanceBy(i64 ms);
  void AdvanceTo(i64 when);

  // True: sleeping timers tick all the same, as on a clock that never lets them sleep.
  bool ticksAlways = false;

 private:
  struct Entry {
    Timer* timer;
    i64 due;
    std::uint64_t order;
  };
  Entry* NextDue(i64 limit);
  void Erase(const Timer& timer);
  bool Awake(Timer& timer);

  i64 now_ = 0;
  std::uint64_t nextOrder_ = 0;
  std::vector<Entry> armed_;
  std::vector<std::pair<Serial*, Timer*>> watches_;
};

}  // namespace tarn

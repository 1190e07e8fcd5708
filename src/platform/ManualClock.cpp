// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ManualClock.h"

#include <algorithm>
#include <limits>

#include "platform/Serial.h"

namespace tarn {

namespace {
// A period near the 64-bit limit (a rate text of 1e999) must not wrap the due time.
i64 DueAfter(i64 now, i64 period) {
  return period > std::numeric_limits<i64>::max() - now ? std::numeric_limits<i64>::max()
                                                        : now + period;
}
}  // namespace

void ManualClock::Erase(const Timer& timer) {
  std::erase_if(armed_, [&](const Entry& e) { return e.timer == &timer; });
}

void ManualClock::Rearm(Timer& timer) {
  Erase(timer);
  if (timer.Running()) armed_.push_back({&timer, DueAfter(now_, timer.Period()), nextOrder_++});
}

void ManualClock::Remove(Timer& timer) {
  Erase(timer);
  std::erase_if(watches_, [&](const auto& w) { return w.second == &timer; });
}

bool ManualClock::Awake(Timer& timer) {
  if (ticksAlways) return true;
  for (const auto& [port, watcher] : watches_) {
    if (watcher == &timer && timer.Asleep() && port->WantsRead()) timer.Wake();
  }
  return !timer.Asleep();
}

bool ManualClock::WaitForInput(Serial& port, i64 maxMs) {
  const bool ready = port.WaitReadable(maxMs);
  if (!ready) now_ += std::max<i64>(maxMs, 0);
  return ready;
}

ManualClock::Entry* ManualClock::NextDue(i64 limit) {
  Entry* best = nullptr;
  for (Entry& e : armed_) {
    if (e.due > limit) continue;
    if (!best || e.due < best->due || (e.due == best->due && e.order < best->order)) best = &e;
  }
  return best;
}

void ManualClock::AdvanceBy(i64 ms) {
  AdvanceTo(now_ + ms);
}

void ManualClock::AdvanceTo(i64 when) {
  while (Entry* e = NextDue(when)) {
    Timer* timer = e->timer;
    now_ = std::max(now_, e->due);
    if (timer->Mode() == 2) {
      e->due = DueAfter(now_, timer->Period());
      e->order = nextOrder_++;
    } else {
      Erase(*timer);
    }
    if (Awake(*timer)) timer->Fire();
  }
  now_ = std::max(now_, when);
}

}  // namespace tarn

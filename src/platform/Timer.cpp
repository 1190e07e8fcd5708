// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Timer.h"

#include <algorithm>

namespace tarn {

Timer::Timer(std::string name, Clock& clock, i64 mode, i64 period)
    : Control(std::move(name), ControlKind::Timer), clock_(clock), mode_(mode), period_(period) {
  clock_.Rearm(*this);
}

Timer::~Timer() {
  clock_.Remove(*this);
}

void Timer::SetMode(i64 mode) {
  const bool unchangedRepeat = mode == 2 && mode_ == 2;
  mode_ = mode;
  if (!unchangedRepeat) clock_.Rearm(*this);
}

void Timer::SetPeriod(i64 period) {
  if (period == period_) return;
  period_ = period;
  clock_.Rearm(*this);
}

void Timer::Fire() {
  if (mode_ == 1) mode_ = 0;
  if (Action) Action(*this);
  if (busy_ && !busy_()) asleep_ = true;
}

i64 NextInstant(i64 anchor, i64 period, i64 now, i64 last) {
  const i64 after = std::max(last, now - 1);
  return after < anchor ? anchor + period : anchor + ((after - anchor) / period + 1) * period;
}

void Timer::SleepWhenIdle(std::function<bool()> busy) {
  busy_ = std::move(busy);
  asleep_ = true;
}

void Timer::Wake() {
  if (!asleep_) return;
  asleep_ = false;
  clock_.Woken(*this);
}

}  // namespace tarn

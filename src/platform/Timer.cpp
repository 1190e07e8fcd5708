#include "platform/Timer.h"

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
}

}  // namespace tarn

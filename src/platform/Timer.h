// SPDX-License-Identifier: GPL-3.0-or-later
// Timer: periodic and one-shot events on the event loop, on an injected clock.
//
// Mode 0 is at rest, 1 fires once and goes back to 0, 2 repeats; any other mode rests too. Period
// counts milliseconds. A period below 1 ms keeps the timer at rest until a period of at least 1 ms
// is set: a rate field emptied or set to 0 must not flood the bus or spin a core.
//
// When a change takes effect: setting Mode 1 (again) or a new Mode starts a full Period from now,
// so a second jam byte keeps the indicator up for another Period; setting Mode 2 on a repeating
// timer leaves its rhythm alone. A new Period restarts the count from now.
//
// A timer may sleep through the ticks that would find nothing to do, so that an idle window does
// not wake the machine. Whatever gives it work wakes it, and it fires at the next instant of the
// rhythm it kept while asleep: nothing observable differs from a timer that ticked all along.
#pragma once

#include <functional>
#include <string>

#include "platform/Controls.h"

namespace tarn {

class Serial;
class Timer;

// The event loop's time source and timer service. The window's logic never reads a wall clock.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual i64 NowMs() const = 0;
  // The timer's Mode or Period changed: arm it afresh from now, or put it to rest.
  virtual void Rearm(Timer& timer) = 0;
  virtual void Remove(Timer& timer) = 0;
  // A loop that holds the thread (the scan list playback) waits here for input from the port, at
  // most `maxMs`; no timer fires meanwhile. True when the port has bytes to read.
  virtual bool WaitForInput(Serial& port, i64 maxMs) = 0;
  // A sleeping timer woke: it is due at the next instant of its rhythm.
  virtual void Woken(Timer& timer) = 0;
  // Wakes `timer` whenever `port` wants a read (Serial::WantsRead), on whatever device the port
  // opens later too. The port must outlive the timer.
  virtual void WakeOnInput(Serial& port, Timer& timer) = 0;
};

class Timer : public Control {
 public:
  Timer(std::string name, Clock& clock, i64 mode, i64 period);
  ~Timer() override;

  i64 Mode() const { return mode_; }
  void SetMode(i64 mode);
  i64 Period() const { return period_; }
  void SetPeriod(i64 period);
  // Whether the clock should fire it.
  bool Running() const { return (mode_ == 1 || mode_ == 2) && period_ >= 1; }

  // Called by the clock when the timer is due: a one-shot goes to rest before its Action runs.
  void Fire();

  // From now on the timer sleeps, and after each tick it sleeps again unless `busy` holds.
  void SleepWhenIdle(std::function<bool()> busy);
  void Wake();
  bool Asleep() const { return asleep_; }

  std::function<void(Timer&)> Action;

 private:
  Clock& clock_;
  i64 mode_;
  i64 period_;
  std::function<bool()> busy_;
  bool asleep_ = false;
};

// Where a woken timer armed at `anchor` fires: the first instant anchor + k * period (k >= 1) that
// is not before `now` and comes after `last`, the instant of its last tick.
i64 NextInstant(i64 anchor, i64 period, i64 now, i64 last);

}  // namespace tarn

// QtClock: the window's timers on Qt's event loop, in real time.
//
// Each Timer gets a QTimer of its own, made when the timer is first armed and kept until the Timer
// goes. A Timer must not be destroyed from inside its own Action (the window never does).
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <memory>
#include <unordered_map>

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

  // The QTimer behind a Timer; null when that Timer was never armed.
  const QTimer* QtTimerFor(const Timer& timer) const;

 private:
  QElapsedTimer started_;
  std::unordered_map<const Timer*, std::unique_ptr<QTimer>> timers_;
};

}  // namespace tarn

#include "platform/qt/QtClock.h"

#include <QThread>
#include <algorithm>
#include <limits>

#include "platform/Serial.h"

namespace tarn {

namespace {

// The pump (50 ms) and the transmit ring (10 ms) set the pace of the bus and want their ticks on
// time; slower timers (the poll, the search, the jam indicator) take the coarse kind, which lets
// the system batch wake-ups while the window idles.
constexpr i64 kPreciseBelowMs = 100;

}  // namespace

QtClock::QtClock() {
  started_.start();
}

QtClock::~QtClock() = default;

i64 QtClock::NowMs() const {
  return started_.elapsed();
}

void QtClock::Rearm(Timer& timer) {
  std::unique_ptr<QTimer>& slot = timers_[&timer];
  if (!slot) {
    slot = std::make_unique<QTimer>();
    QObject::connect(slot.get(), &QTimer::timeout, [&timer] { timer.Fire(); });
  }
  if (!timer.Running()) {
    slot->stop();
    return;
  }
  const i64 period = std::min<i64>(timer.Period(), std::numeric_limits<int>::max());
  slot->setTimerType(period < kPreciseBelowMs ? Qt::PreciseTimer : Qt::CoarseTimer);
  // A one-shot QTimer stops by itself when it fires, and Timer::Fire puts the mode back to rest.
  slot->setSingleShot(timer.Mode() == 1);
  slot->start(static_cast<int>(period));  // start() restarts: a new period counts from now
}

void QtClock::Remove(Timer& timer) {
  timers_.erase(&timer);
}

bool QtClock::WaitForInput(Serial& port, i64 maxMs) {
  QElapsedTimer waited;
  waited.start();
  if (port.WaitReadable(maxMs)) return true;
  // A closed or vanished port answers at once; sleeping out the rest keeps the caller's loop from
  // spinning a core.
  const i64 rest = maxMs - waited.elapsed();
  if (rest > 0) QThread::msleep(static_cast<unsigned long>(rest));
  return false;
}

const QTimer* QtClock::QtTimerFor(const Timer& timer) const {
  const auto it = timers_.find(&timer);
  return it == timers_.end() ? nullptr : it->second.get();
}

}  // namespace tarn

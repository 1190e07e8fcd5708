// SPDX-License-Identifier: GPL-3.0-or-later
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

constexpr i64 kNsPerMs = 1'000'000;

i64 QtPeriod(const Timer& timer) {
  return std::min<i64>(timer.Period(), std::numeric_limits<int>::max());
}

}  // namespace

QtClock::QtClock() {
  started_.start();
}

QtClock::~QtClock() = default;

i64 QtClock::NowMs() const {
  return started_.elapsed();
}

QtClock::Slot& QtClock::SlotFor(Timer& timer) {
  Slot& slot = timers_[&timer];
  if (!slot.qt) {
    slot.qt = std::make_unique<QTimer>();
    slot.qt->setSingleShot(true);
    QObject::connect(slot.qt.get(), &QTimer::timeout, [this, &timer, &slot] { Tick(timer, slot); });
  }
  return slot;
}

void QtClock::Rearm(Timer& timer) {
  Slot& slot = SlotFor(timer);
  slot.anchor = slot.last = started_.nsecsElapsed();
  Schedule(timer, slot);
}

// Every timer runs on single shots to the instants of its rhythm, a sleeping one only when woken:
// one path for all, and a repeating timer keeps its rhythm however late a tick comes.
void QtClock::Schedule(Timer& timer, Slot& slot) {
  if (!timer.Running() || timer.Asleep()) {
    slot.qt->stop();
    return;
  }
  const i64 now = started_.nsecsElapsed();
  const i64 period = QtPeriod(timer);
  slot.due = NextInstant(slot.anchor, period * kNsPerMs, now, slot.last);
  slot.qt->setTimerType(period < kPreciseBelowMs ? Qt::PreciseTimer : Qt::CoarseTimer);
  // Never before the instant; more than a period after a coarse shot that came early, so bounded
  // by what QTimer takes.
  const i64 delayMs = (slot.due - now + kNsPerMs - 1) / kNsPerMs;
  slot.qt->start(static_cast<int>(std::min<i64>(delayMs, std::numeric_limits<int>::max())));
}

void QtClock::Tick(Timer& timer, Slot& slot) {
  // A timer sent to sleep after it was armed still has its shot standing: that tick is skipped.
  if (!timer.Asleep()) {
    slot.last = slot.due;
    timer.Fire();
  }
  Schedule(timer, slot);
  if (!timer.Asleep()) return;
  for (const auto& w : watches_) {
    if (w->timer == &timer && w->notifier) w->notifier->setEnabled(w->port->Descriptor() >= 0);
  }
}

void QtClock::Woken(Timer& timer) {
  Schedule(timer, SlotFor(timer));
}

void QtClock::WakeOnInput(Serial& port, Timer& timer) {
  watches_.push_back(std::make_unique<Watch>(Watch{&port, &timer, nullptr}));
  Watch& watch = *watches_.back();
  port.DeviceChanged = [this, &watch] { Follow(watch); };
  Follow(watch);
}

void QtClock::Follow(Watch& watch) {
  watch.notifier.reset();
  const int fd = watch.port->Descriptor();
  if (fd < 0) return;
  watch.notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
  QObject::connect(watch.notifier.get(), &QSocketNotifier::activated, [&watch] {
    watch.notifier->setEnabled(false);
    watch.port->NoteReadable();
    watch.timer->Wake();
  });
  watch.notifier->setEnabled(watch.timer->Asleep());
}

void QtClock::Remove(Timer& timer) {
  std::erase_if(watches_, [&](const std::unique_ptr<Watch>& w) {
    if (w->timer == &timer) w->port->DeviceChanged = nullptr;
    return w->timer == &timer;
  });
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

}  // namespace tarn

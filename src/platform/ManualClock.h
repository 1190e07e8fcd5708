// A virtual-time clock: time moves only when told, and due timers fire in order of their due time
// (timers due at the same moment in the order their due time was set). Tests run minutes of the
// program in microseconds with it.
#pragma once

#include <cstdint>
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

  // Moves time to now + ms, firing every timer that falls due on the way.
  void AdvanceBy(i64 ms);
  void AdvanceTo(i64 when);
  bool IsArmed(const Timer& timer) const;

 private:
  struct Entry {
    Timer* timer;
    i64 due;
    std::uint64_t order;
  };
  Entry* NextDue(i64 limit);
  void Erase(const Timer& timer);

  i64 now_ = 0;
  std::uint64_t nextOrder_ = 0;
  std::vector<Entry> armed_;
};

}  // namespace tarn

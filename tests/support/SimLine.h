// The simulated radio on an in-memory line, in virtual time: what the window writes reaches the
// bus at once, and what the bus has due is put on the line as time advances.
#pragma once

#include "simradio/SimRadio.h"
#include "support/WindowHarness.h"

namespace tarn::test {

struct SimLine {
  SimLine(WindowHarness& harness, sim::BusOptions options) : h(harness), bus(options) {
    h.Line().onWrite = [this](MemoryLine&, const std::string& written) {
      bus.Receive(written, h.clock.NowMs());
    };
  }
  // Advances in 10 ms steps, delivering what the bus has due after each; `onDelivery` may change
  // the bytes on their way (a jam, noise).
  template <class OnDelivery>
  void Run(i64 ms, OnDelivery onDelivery) {
    for (i64 t = 0; t < ms; t += 10) {
      h.clock.AdvanceBy(10);
      std::string due = bus.TakeDue(h.clock.NowMs());
      if (!due.empty()) h.Line().incoming += onDelivery(std::move(due));
    }
  }
  void Run(i64 ms) {
    Run(ms, [](std::string s) { return s; });
  }

  WindowHarness& h;
  sim::SimBus bus;
};

}  // namespace tarn::test

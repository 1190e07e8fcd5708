// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PtyHarness.h"

#include <stdexcept>

namespace tarn::test {

PtyHarness::PtyHarness(sim::BusOptions options, std::string folder)
    : workFolder(std::move(folder)) {
  std::string why;
  radio = sim::PtyRadio::OpenPty(options, why);
  if (!radio) throw std::runtime_error("cannot open a pseudo-terminal: " + why);
  radio->WithBus([](sim::SimBus& bus) { return &bus.AddRadio(sim::RadioState{}); });
  ports.Ports().push_back({radio->SlavePath(), radio->SlavePath()});
}

PtyHarness::~PtyHarness() {
  w.reset();
  if (radio) radio->Stop();
}

void PtyHarness::Start() {
  radio->StartThread();
  w = std::make_unique<IcomWindow>(
      app, WindowServices{clock, ports, driver, log, messages, chooser, workFolder});
  w->Open();
  w->init();
}

}  // namespace tarn::test

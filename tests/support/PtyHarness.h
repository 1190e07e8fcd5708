// SPDX-License-Identifier: GPL-3.0-or-later
// The window's logic on the virtual clock, talking over a real pseudo-terminal to the simulated
// radio, which serves from its own thread in real time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/PosixSerial.h"
#include "simradio/SimRadio.h"
#include "support/WindowHarness.h"

namespace tarn::test {

struct PtyHarness {
  explicit PtyHarness(sim::BusOptions options = {}, std::string workFolder = {});
  ~PtyHarness();

  // Builds and starts the window on the radio's port (opened at 9600 by init).
  void Start();
  ManualClock clock;
  std::vector<SerialPort> machinePorts;  // what a rescan of the machine finds
  GrowingPortCatalog ports{[this] { return machinePorts; }};
  PosixSerialDriver driver;
  RecordingLog log;
  RecordingMessages messages;
  ScriptedChooser chooser;
  App app;
  std::string workFolder;
  std::unique_ptr<sim::PtyRadio> radio;
  std::unique_ptr<IcomWindow> w;
};

}  // namespace tarn::test

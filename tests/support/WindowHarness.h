// SPDX-License-Identifier: GPL-3.0-or-later
// A whole window on the virtual clock with in-memory ports: no display, no devices, no real time.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/IcomWindow.h"
#include "platform/ManualClock.h"
#include "support/MemorySerial.h"
#include "support/Recording.h"

namespace tarn::test {

class ScriptedChooser : public FileChooser {
 public:
  std::optional<std::string> GetOpenFolderItem(std::string_view filterType) override {
    filters.emplace_back(filterType);
    return next;
  }
  std::optional<std::string> next;
  std::vector<std::string> filters;
};

// Bytes from a list of values: Bytes({0xFE, 0xFE, 0xE0}).
std::string Bytes(std::initializer_list<int> values);
// Bytes from hex text: Hex("FE FE E0").
std::string Hex(const std::string& text);

struct WindowHarness {
  // Ports named "port0", "port1"... with paths "/mem/0", "/mem/1"...
  explicit WindowHarness(int portCount = 1, std::string workFolder = {});

  // Builds and starts the window as the program does: open events, then init.
  void Start();
  // Builds it without init, for tests of the receive logic alone.
  void BuildOnly();

  MemoryLine& Line(int port = 0) { return driver.Line("/mem/" + std::to_string(port)); }
  // Feeds bytes straight into the receiver, as CheckSerial would.
  void Parse(const std::string& bytes);

  ManualClock clock;
  FixedPortCatalog ports;
  MemorySerialDriver driver;
  SerialDriver* lineDriver = &driver;  // what the window opens its ports with
  RecordingLog log;
  RecordingMessages messages;
  ScriptedChooser chooser;
  App app;
  std::string workFolder;
  std::unique_ptr<IcomWindow> w;
};

}  // namespace tarn::test

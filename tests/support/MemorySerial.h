// SPDX-License-Identifier: GPL-3.0-or-later
// An in-memory serial line for tests on the virtual clock: the test puts bytes on the line and
// reads every Write the program made, one entry per call.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Serial.h"

namespace tarn::test {

struct MemoryLine {
  std::string incoming;  // bytes the next ReadAll will deliver
  // Bytes that arrive between reads: each ReadAll delivers the first of them alone, and `incoming`
  // only once none is left.
  std::deque<std::string> arrivals;
  std::vector<std::string> writes;  // one entry per Write, in order
  std::vector<LineSettings> configured;
  int opens = 0;
  bool open = false;
  bool refuseOpen = false;
  bool lost = false;
  // Called after each Write: a stand-in radio can answer by appending to `incoming`.
  std::function<void(MemoryLine&, const std::string& written)> onWrite;

  std::string AllWritten() const;
};

class MemorySerialDriver : public SerialDriver {
 public:
  // The line behind a port path, made on first use.
  MemoryLine& Line(const std::string& path);
  std::unique_ptr<SerialDevice> Open(const SerialPort& port, std::string& why) override;

 private:
  std::map<std::string, std::shared_ptr<MemoryLine>> lines_;
};

}  // namespace tarn::test

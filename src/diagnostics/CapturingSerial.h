// SPDX-License-Identifier: GPL-3.0-or-later
// CapturingDriver: any serial driver, with every byte its lines read and write shown to a
// BusCapture on the way. The bytes, the timing and the window's view of the line stay as they are.
#pragma once

#include "diagnostics/BusCapture.h"
#include "platform/Serial.h"

namespace tarn {

class CapturingDriver : public SerialDriver {
 public:
  CapturingDriver(SerialDriver& inner, BusCapture& capture) : inner_(inner), capture_(capture) {}
  std::unique_ptr<SerialDevice> Open(const tarn::SerialPort& port, std::string& why) override;

 private:
  SerialDriver& inner_;
  BusCapture& capture_;
};

}  // namespace tarn

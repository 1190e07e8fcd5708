// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Serial.h"

#include <array>

namespace tarn {

int BaudForCode(i64 code) {
  static constexpr std::array<int, kBaudRows> kBauds = {
      300, 600, 1200, 1800, 2400, 3600, 4800, 7200, 9600, 14400, 19200, 28800, 38400, 57600};
  if (code < 0 || code >= static_cast<i64>(kBauds.size())) return 9600;
  return kBauds[static_cast<std::size_t>(code)];
}

LineSettings Serial::Settings() const {
  LineSettings s;
  s.baud = BaudForCode(Baud);
  s.dataBits = (Bits >= 0 && Bits <= 3) ? static_cast<int>(5 + Bits) : 8;
  s.parity = Parity == 1 ? 'O' : Parity == 2 ? 'E' : 'N';
  s.stopBits = Stop == 2 ? 2 : 1;
  s.xonXoff = XON;
  return s;
}

bool Serial::Open() {
  Close();
  std::string why;
  device_ = driver_.Open(SerialPort, why);
  if (!device_) {
    LogOpenFailure(why);
    return false;
  }
  if (lossReported_) status_.ShowStatus("");
  lossReported_ = false;
  if (DeviceChanged) DeviceChanged();
  return true;
}

// A watch lets go of the descriptor before it is closed.
void Serial::Close() {
  if (!device_) return;
  const std::unique_ptr<SerialDevice> closing = std::move(device_);
  if (DeviceChanged) DeviceChanged();
}

void Serial::Reset() {
  if (device_ && !device_->Configure(Settings())) {
    log_.DebugLog("cannot set the line format of " + SerialPort.path);
  }
}

void Serial::NoteLoss() {
  if (lossReported_) return;
  lossReported_ = true;
  log_.DebugLog("serial port " + SerialPort.path + " is gone");
  status_.ShowStatus("Serial port " + SerialPort.Name +
                     " is gone: choose it again under Serial Port once it is back.");
}

void Serial::LogOpenFailure(const std::string& why) {
  log_.DebugLog("cannot open serial port " + SerialPort.path + ": " + why);
}

// A line that opens in the background and gives up ends as an Open that gave false: the same
// message, and no device left.
void Serial::GiveUp(const std::string& why) {
  LogOpenFailure(why);
  Close();
  status_.MsgBox(kOpenFailure);
}

// After each read and write: a line that gave up opening goes, and what the line has to say is
// said. False when no device is left.
bool Serial::Settle() {
  if (std::string why; device_->GaveUp(why)) {
    GiveUp(why);
    return false;
  }
  if (const std::string notice = device_->TakeNotice(); !notice.empty()) {
    log_.DebugLog("serial port " + SerialPort.path + ": " + notice);
    status_.ShowStatus("Serial port " + SerialPort.Name + ": " + notice);
  }
  if (device_->Lost()) NoteLoss();
  return true;
}

std::string Serial::ReadAll() {
  std::string bytes;
  if (!device_) return bytes;
  device_->ReadAvailable(bytes);
  if (!Settle()) return {};
  return bytes;
}

void Serial::Write(std::string_view bytes) {
  if (!device_) return;
  const bool taken = device_->Write(bytes);
  if (!Settle()) return;
  if (!device_->Lost() && !taken && !stallReported_) {
    log_.DebugLog("serial port " + SerialPort.path + " takes no output: bytes dropped");
  }
  stallReported_ = !taken;
}

bool Serial::WaitReadable(i64 maxMs) {
  return device_ && device_->WaitReadable(maxMs);
}

bool Serial::WantsRead() {
  if (!device_) return false;
  if (device_->Lost()) return !lossReported_;
  return device_->HoldsOutput() || device_->WaitReadable(0);
}

}  // namespace tarn

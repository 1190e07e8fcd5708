// SPDX-License-Identifier: GPL-3.0-or-later
// Serial: the serial line as the window's logic drives it.
//
// The logic names a port, opens it, then sets speed and format by codes and calls Reset, which
// puts them in force. ReadAll returns at once with every byte received since the last read; Write
// takes a whole frame, never blocks and changes no byte. Both are harmless on a port that is not
// open, or that vanished: reads give nothing and writes are dropped. A port that vanishes is put
// in the window's status once, and the status is cleared when a port opens again.
//
// Codes: Baud 0..13 select 300, 600, 1200, 1800, 2400, 3600, 4800, 7200, 9600, 14400, 19200,
// 28800, 38400 and 57600 baud (a code outside that range selects 9600); Bits 0..3 are 5..8 data
// bits; Parity 0 none, 1 odd, 2 even; Stop 0 one stop bit, 2 two; XON software flow control.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/System.h"
#include "platform/Text.h"

namespace tarn {

struct LineSettings {
  int baud = 9600;
  int dataBits = 8;
  char parity = 'N';  // 'N', 'O' or 'E'
  int stopBits = 1;
  bool xonXoff = false;
};

int BaudForCode(i64 code);
inline constexpr int kBaudRows = 14;  // codes 0..13

// The one message to the user, for a port that will not open.
inline constexpr std::string_view kOpenFailure = "Failure to open serial  port!!";

// An open line, as a backend gives it.
class SerialDevice {
 public:
  virtual ~SerialDevice() = default;
  virtual bool Configure(const LineSettings& settings) = 0;
  // Appends every byte that is waiting to `out`; never blocks.
  virtual void ReadAvailable(std::string& out) = 0;
  // Takes the whole text or none of it; false when the line has taken nothing for so long that
  // the text was dropped.
  virtual bool Write(std::string_view bytes) = 0;
  virtual bool WaitReadable(i64 maxMs) = 0;
  // The line is gone (hang-up, cable pulled): reads give nothing from now on.
  virtual bool Lost() const = 0;
  // For an event loop to watch for input; -1 when there is nothing to watch.
  virtual int Descriptor() const { return -1; }
  // Output the line did not take yet, which goes out at the next read or write.
  virtual bool HoldsOutput() const { return false; }
  // The event loop saw the line readable: the next read's bytes arrived about now.
  virtual void Readable() {}
  // A line that opens in the background (over a network) answers true, with the reason, once it
  // has given up opening; it reads as lost from then on. A local line opens before Open returns.
  virtual bool GaveUp(std::string& /*why*/) { return false; }
  // A lasting state of the line the user should see (a setting the far end would not take), new
  // since the last call; empty when there is none.
  virtual std::string TakeNotice() { return {}; }
};

class SerialDriver {
 public:
  virtual ~SerialDriver() = default;
  // Nothing when the port cannot be opened; `why` then says what went wrong.
  virtual std::unique_ptr<SerialDevice> Open(const SerialPort& port, std::string& why) = 0;
};

class Serial {
 public:
  Serial(SerialDriver& driver, LogSink& log, MessageSink& status)
      : driver_(driver), log_(log), status_(status) {}

  bool Open();
  void Close();
  void Reset();
  bool IsOpen() const { return device_ != nullptr; }

  std::string ReadAll();
  void Write(std::string_view bytes);
  bool WaitReadable(i64 maxMs);
  // A read now would do something: take bytes, find the line gone for the first time, or push
  // out held output.
  bool WantsRead();
  bool HoldsOutput() const { return device_ && device_->HoldsOutput(); }
  void NoteReadable() {
    if (device_) device_->Readable();
  }
  // The descriptor to watch for input; -1 when the port is closed or its line gone.
  int Descriptor() const { return device_ && !device_->Lost() ? device_->Descriptor() : -1; }
  // Told after the device behind the port changed, so that a watch follows it.
  std::function<void()> DeviceChanged;

  i64 Port = 0;
  tarn::SerialPort SerialPort;
  i64 Baud = 8;
  i64 Bits = 3;
  i64 Parity = 0;
  i64 Stop = 0;
  bool XON = false;

 private:
  LineSettings Settings() const;
  void NoteLoss();
  void LogOpenFailure(const std::string& why);
  void GiveUp(const std::string& why);
  bool Settle();

  SerialDriver& driver_;
  LogSink& log_;
  MessageSink& status_;
  std::unique_ptr<SerialDevice> device_;
  bool lossReported_ = false;
  bool stallReported_ = false;
};

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The serial backend for lines on another machine (tcp://, rfc2217://, gensio:), through gensio,
// and the program's driver that sends each port to its backend by its name.
//
// gensio runs on a thread of its own, started with the first network port. It never touches the
// window: bytes it receives wait in the line's buffer, and an eventfd, the line's Descriptor, wakes
// the event loop, which reads them on its own thread. Opening goes on in the background, so the
// window never waits on a name lookup or a host that does not answer: Open returns a line at once,
// and a line that has not connected within kOpenTimeout gives up (GaveUp), which the window shows
// as a port that would not open. Output waits in a bounded buffer of ours while the line connects
// or the far end reads slowly; a frame that does not fit is dropped whole.
#pragma once

#include <chrono>
#include <memory>

#include "platform/PosixSerial.h"
#include "platform/Serial.h"

namespace tarn {

inline constexpr std::chrono::milliseconds kOpenTimeout{4000};

class GensioSerialDriver : public SerialDriver {
 public:
  // Blocks gensio's wake signal in the calling thread, which every thread made later inherits; so
  // it must be made before any other thread starts (before the QApplication).
  GensioSerialDriver();
  ~GensioSerialDriver() override;
  GensioSerialDriver(const GensioSerialDriver&) = delete;
  GensioSerialDriver& operator=(const GensioSerialDriver&) = delete;
  std::unique_ptr<SerialDevice> Open(const tarn::SerialPort& port, std::string& why) override;
  // Closes the connection kept for a port opened again (another port is being opened).
  void LetGo();

  struct Loop;

 private:
  std::unique_ptr<Loop> loop_;
};

// Device paths to the termios backend, network names (NetworkPort.h) to gensio.
class LineDriver : public SerialDriver {
 public:
  std::unique_ptr<SerialDevice> Open(const tarn::SerialPort& port, std::string& why) override;

 private:
  PosixSerialDriver local_;
  GensioSerialDriver network_;
};

}  // namespace tarn

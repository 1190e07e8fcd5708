// SPDX-License-Identifier: GPL-3.0-or-later
// The serial backend on POSIX termios: real ttys, USB adapters, pseudo-terminals and network
// serial ports alike.
//
// The descriptor is non-blocking and raw, so ReadAll sees new bytes also from a loop that never
// returns to the event loop, and an idle read costs one system call. Bytes the kernel will not take
// at once wait in a bounded buffer of ours and go out at the next read or write; the caller never
// waits. A hang-up (EIO, or a read of nothing with POLLHUP) marks the line lost.
#pragma once

#include <sys/types.h>

#include "platform/Serial.h"

namespace tarn {

// The system calls under a line's reads and writes: a test puts the faults of real lines between
// them and the kernel (EINTR, EAGAIN, short counts, a read of nothing).
struct LineCalls {
  std::function<ssize_t(int, void*, std::size_t)> read;
  std::function<ssize_t(int, const void*, std::size_t)> write;
};

class PosixSerialDriver : public SerialDriver {
 public:
  PosixSerialDriver();
  std::unique_ptr<SerialDevice> Open(const tarn::SerialPort& port, std::string& why) override;

  LineCalls calls;  // taken by each line as it opens
};

// Sets a speed that has no B-constant (3600, 7200, 14400, 28800 baud) where the OS allows it.
bool SetCustomBaud(int fd, int baud);

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The faults of a real line, put under the program's own serial backend: its reads and writes go
// to the kernel, but fail now and then the ways real ones do, chosen from a seeded generator.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <random>

#include "platform/PosixSerial.h"

namespace tarn::test {

// Every line `driver` opens from now on; `random` must outlive them. Of eight reads one is cut
// short, one reads nothing (as a cooked line's end-of-file does), one is interrupted and one finds
// nothing waiting. Writes alike, but for the empty read, and now and then the line takes nothing
// for up to 40 writes.
inline void InjectLineFaults(PosixSerialDriver& driver, std::mt19937& random) {
  driver.calls.read = [&random](int fd, void* buf, std::size_t n) -> ssize_t {
    const auto r = random() % 8;
    if (r < 2) return errno = r ? EAGAIN : EINTR, -1;
    return r == 2 ? 0 : ::read(fd, buf, r == 3 ? 1 + random() % n : n);
  };
  driver.calls.write = [&random, stalled = 0](int fd, const void* buf,
                                              std::size_t n) mutable -> ssize_t {
    if (stalled == 0 && random() % 50 == 0) stalled = 1 + static_cast<int>(random() % 40);
    if (stalled > 0) return --stalled, 0;
    const auto r = random() % 8;
    if (r < 2) return errno = r ? EAGAIN : EINTR, -1;
    return ::write(fd, buf, r == 3 ? 1 + random() % n : n);
  };
}

}  // namespace tarn::test

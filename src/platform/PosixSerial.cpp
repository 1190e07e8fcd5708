// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PosixSerial.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tarn {

namespace {

// What waits for the kernel beyond this is dropped: a line that takes nothing for this long is
// gone or flow-controlled shut, and holding more would only delay every later frame.
constexpr std::size_t kMaxPendingOut = 64 * 1024;

speed_t StandardSpeed(int baud) {
  switch (baud) {
    case 300:
      return B300;
    case 600:
      return B600;
    case 1200:
      return B1200;
    case 1800:
      return B1800;
    case 2400:
      return B2400;
    case 4800:
      return B4800;
    case 9600:
      return B9600;
    case 19200:
      return B19200;
    case 38400:
      return B38400;
    case 57600:
      return B57600;
    default:
      return 0;
  }
}

class PosixSerialDevice : public SerialDevice {
 public:
  PosixSerialDevice(int fd, LineCalls calls) : fd_(fd), calls_(std::move(calls)) {}
  // Unsent output is discarded first: Linux otherwise holds close() until it has drained, up to
  // 30 s on a slow or stalled line, and the window would freeze on a change of port or speed.
  ~PosixSerialDevice() override {
    ::tcflush(fd_, TCOFLUSH);
    ::close(fd_);
  }

  bool Configure(const LineSettings& s) override {
    termios tio{};
    if (::tcgetattr(fd_, &tio) != 0) return false;
    ::cfmakeraw(&tio);
    tio.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cflag |= s.dataBits == 5 ? CS5 : s.dataBits == 6 ? CS6 : s.dataBits == 7 ? CS7 : CS8;
    if (s.parity != 'N') tio.c_cflag |= PARENB | (s.parity == 'O' ? PARODD : 0);
    if (s.stopBits == 2) tio.c_cflag |= CSTOPB;
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
    if (s.xonXoff) tio.c_iflag |= IXON | IXOFF;
    tio.c_cc[VMIN] = 1;
    tio.c_cc[VTIME] = 0;
    const speed_t speed = StandardSpeed(s.baud);
    if (speed != 0) {
      ::cfsetispeed(&tio, speed);
      ::cfsetospeed(&tio, speed);
    }
    if (::tcsetattr(fd_, TCSANOW, &tio) != 0) return false;
    return speed != 0 || SetCustomBaud(fd_, s.baud);
  }

  void ReadAvailable(std::string& out) override {
    Flush();
    char buf[4096];
    while (!lost_) {
      const ssize_t n = calls_.read(fd_, buf, sizeof buf);
      if (n > 0) {
        out.append(buf, static_cast<std::size_t>(n));
        if (static_cast<std::size_t>(n) < sizeof buf) break;
      } else if (n == 0) {
        // A line left cooked reads its end-of-file character as 0 too: only a hang-up is a loss.
        if (HungUp()) MarkLost();
        break;
      } else if (errno == EINTR) {
        continue;
      } else {
        if (errno != EAGAIN && errno != EWOULDBLOCK) MarkLost();
        break;
      }
    }
  }

  bool Write(std::string_view bytes) override {
    if (lost_) return false;
    Flush();
    if (pending_.size() + bytes.size() > kMaxPendingOut) return false;
    pending_.append(bytes);
    Flush();
    return true;
  }

  bool WaitReadable(i64 maxMs) override {
    if (lost_) return false;
    pollfd p{fd_, POLLIN, 0};
    const int timeout = maxMs < 0 ? 0 : maxMs > 60000 ? 60000 : static_cast<int>(maxMs);
    const int r = ::poll(&p, 1, timeout);
    // A hang-up shows as readable: the next read finds it and marks the line lost.
    return r > 0 && (p.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
  }

  bool Lost() const override { return lost_; }
  int Descriptor() const override { return fd_; }
  bool HoldsOutput() const override { return !pending_.empty(); }

 private:
  // Output held for a lost line would never go, and would keep waking the pump.
  void MarkLost() {
    lost_ = true;
    pending_.clear();
  }

  bool HungUp() const {
    pollfd p{fd_, POLLIN, 0};
    return ::poll(&p, 1, 0) > 0 && (p.revents & POLLHUP) != 0;
  }

  void Flush() {
    while (!pending_.empty() && !lost_) {
      const ssize_t n = calls_.write(fd_, pending_.data(), pending_.size());
      if (n > 0) {
        pending_.erase(0, static_cast<std::size_t>(n));
      } else if (n < 0 && errno == EINTR) {
        continue;
      } else {
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) MarkLost();
        return;
      }
    }
  }

  int fd_;
  LineCalls calls_;
  bool lost_ = false;
  std::string pending_;
};

}  // namespace

PosixSerialDriver::PosixSerialDriver() : calls{::read, ::write} {}

std::unique_ptr<SerialDevice> PosixSerialDriver::Open(const tarn::SerialPort& port,
                                                      std::string& why) {
  if (port.path.empty()) {
    why = "no such port";
    return nullptr;
  }
  const int fd = ::open(port.path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    why = std::strerror(errno);
    return nullptr;
  }
  if (!::isatty(fd)) {
    ::close(fd);
    why = "not a serial device";
    return nullptr;
  }
  // Keeps a second program off the line; pseudo-terminals may refuse, which costs nothing.
  (void)::ioctl(fd, TIOCEXCL);
  auto device = std::make_unique<PosixSerialDevice>(fd, calls);
  device->Configure(LineSettings{});
  return device;
}

}  // namespace tarn

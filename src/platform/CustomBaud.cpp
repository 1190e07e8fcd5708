// SPDX-License-Identifier: GPL-3.0-or-later
// Kept apart: Linux's termios2 header cannot share a file with <termios.h>.
#include "platform/PosixSerial.h"

#if defined(__linux__)
#include <asm/termbits.h>
#include <sys/ioctl.h>
#elif defined(__APPLE__)
#include <IOKit/serial/ioss.h>
#include <sys/ioctl.h>
#endif

namespace tarn {

bool SetCustomBaud(int fd, int baud) {
#if defined(__linux__)
  struct termios2 tio {};
  if (::ioctl(fd, TCGETS2, &tio) != 0) return false;
  tio.c_cflag &= ~static_cast<tcflag_t>(CBAUD);
  tio.c_cflag |= BOTHER;
  tio.c_ispeed = static_cast<speed_t>(baud);
  tio.c_ospeed = static_cast<speed_t>(baud);
  return ::ioctl(fd, TCSETS2, &tio) == 0;
#elif defined(__APPLE__)
  speed_t speed = static_cast<speed_t>(baud);
  return ::ioctl(fd, IOSSIOSPEED, &speed) == 0;
#else
  (void)fd;
  (void)baud;
  return false;
#endif
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The program's port list: the ports named on the command line first, then the machine's.
#pragma once

#include <string>
#include <vector>

#include "platform/System.h"

namespace tarn {

// The machine's serial ports as Qt finds them: the port name shown, the device path to open.
std::vector<SerialPort> MachinePorts();

// `given` paths first, in their order, each shown by its path; then the machine's ports. A port
// is listed once: two entries are the same port when their paths are the same file (a symlink such
// as /dev/serial/by-id/... and the device it points to count as one).
std::vector<SerialPort> MergePorts(const std::vector<std::string>& given,
                                   const std::vector<SerialPort>& machine);

}  // namespace tarn

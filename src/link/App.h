// SPDX-License-Identifier: GPL-3.0-or-later
// App: the application object. It outlives the window and holds the one port choice.
#pragma once

#include <cstdint>

#include "platform/Application.h"

namespace tarn {

class App : public Application {
 public:
  // The row of SerialPopup in use, which is also the port's index in System.SerialPort. It lives
  // only in memory and starts at 0 on every run.
  std::int64_t ourSerialPort = 0;
};

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The program's menu bar: File, Edit and an empty third title.
#pragma once

#include "platform/Menus.h"

namespace tarn {

// Builds a new MenuBar1, as its Constructor does. The window builds it once and keeps it
// (IcomWindow::Menus), so there is one bar, as with the one implicit instance.
MenuBar BuildMenuBar1();

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The program's menu bar: File, Edit and an empty third title.
#pragma once

#include "platform/Menus.h"

namespace tarn {

MenuBar MenuBar1();

}  // namespace tarn

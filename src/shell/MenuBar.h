// The program's menu bar: File, Edit and an empty third title.
#pragma once

#include "platform/Menus.h"

namespace tarn {

MenuBar MenuBar1();

}  // namespace tarn

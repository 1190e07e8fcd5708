// SPDX-License-Identifier: GPL-3.0-or-later
// The Qt menu bar built from the menu model.
#pragma once

#include <QAction>
#include <QMenuBar>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/Menus.h"

namespace tarn {

struct MenuCommands {
  std::function<void()> quit;                         // the item marked isQuit
  std::function<void(std::string_view name)> choose;  // every other item without a built-in role
};

// Each item's QAction by the item's name (also the action's object name).
using MenuActions = std::map<std::string, QAction*, std::less<>>;

// Builds the menus in `bar`. The Edit items (EditUndo, EditCut, EditCopy, EditPaste, EditClear)
// act on the text field that has the keyboard focus; "Cmd+" shortcuts are the platform's command
// key, and those with a standard meaning take the platform's standard keys.
MenuActions BuildMenus(QMenuBar& bar, const MenuBar& model, const MenuCommands& commands);

// A model shortcut ("Cmd+Q") as the platform's key sequences; none for an empty text.
QList<QKeySequence> ShortcutsFor(std::string_view modelShortcut);

}  // namespace tarn

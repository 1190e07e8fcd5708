// SPDX-License-Identifier: GPL-3.0-or-later
// The menu bar as a model: the Qt side builds real menus from it, the tests read it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarn {

struct MenuItem {
  std::string Name;
  std::string Text;              // "-" makes a separator
  std::string KeyboardShortcut;  // "Cmd+Q" form: the platform's command key
  bool isQuit = false;           // the platform carries out the quit
  std::vector<MenuItem> children;
};

struct FileType {
  std::string Name = "text";
  std::string Extensions;
  std::string MacType = "TEXT";
  std::string MacCreator = "R*ch";
  std::string MimeType;
  bool Imported = true;
};

class MenuBar {
 public:
  const std::vector<MenuItem>& TopLevel() const { return items_; }
  const MenuItem* Find(std::string_view name) const;
  // Adds a top-level menu and gives its item list to fill.
  std::vector<MenuItem>& AddMenu(MenuItem menu);

 private:
  std::vector<MenuItem> items_;
};

}  // namespace tarn

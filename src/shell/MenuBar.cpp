#include "shell/MenuBar.h"

namespace tarn {

namespace {

const MenuItem* FindIn(const std::vector<MenuItem>& items, std::string_view name) {
  for (const MenuItem& item : items) {
    if (item.Name == name) return &item;
    if (const MenuItem* child = FindIn(item.children, name)) return child;
  }
  return nullptr;
}

}  // namespace

MenuBar::MenuBar() {
  Untitled0();
  Untitled1();
  Untitled2();
}

void MenuBar::Untitled0() {
  items_.push_back({"FileMenu", "&File", "", false, {}});
  auto& file = items_.back().children;
  file.push_back({"FileQuit", "Quit", "Cmd+Q", true, {}});
  file.push_back({"FileScanList", "ScanList...", "", false, {}});
}

void MenuBar::Untitled1() {
  items_.push_back({"EditMenu", "&Edit", "", false, {}});
  auto& edit = items_.back().children;
  edit.push_back({"EditUndo", "Undo", "Cmd+Z", false, {}});
  edit.push_back({"UntitledMenu0", "-", "", false, {}});
  edit.push_back({"EditCut", "Cut", "Cmd+X", false, {}});
  edit.push_back({"EditCopy", "Copy", "Cmd+C", false, {}});
  edit.push_back({"EditPaste", "Paste", "Cmd+V", false, {}});
  edit.push_back({"EditClear", "Clear", "", false, {}});
}

// A top-level item with no text and no children.
void MenuBar::Untitled2() {
  items_.push_back({"UntitledMenu2", "", "", false, {}});
}

const MenuItem* MenuBar::Find(std::string_view name) const {
  return FindIn(items_, name);
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MenuBar.h"

namespace tarn {

namespace {

void Untitled0(MenuBar& bar) {
  auto& file = bar.AddMenu({"FileMenu", "&File", "", false, {}});
  file.push_back({"FileQuit", "Quit", "Cmd+Q", true, {}});
  file.push_back({"FileScanList", "ScanList...", "", false, {}});
}

void Untitled1(MenuBar& bar) {
  auto& edit = bar.AddMenu({"EditMenu", "&Edit", "", false, {}});
  edit.push_back({"EditUndo", "Undo", "Cmd+Z", false, {}});
  edit.push_back({"UntitledMenu0", "-", "", false, {}});
  edit.push_back({"EditCut", "Cut", "Cmd+X", false, {}});
  edit.push_back({"EditCopy", "Copy", "Cmd+C", false, {}});
  edit.push_back({"EditPaste", "Paste", "Cmd+V", false, {}});
  edit.push_back({"EditClear", "Clear", "", false, {}});
}

// A top-level item with no text and no children.
void Untitled2(MenuBar& bar) {
  bar.AddMenu({"UntitledMenu2", "", "", false, {}});
}

}  // namespace

MenuBar BuildMenuBar1() {
  MenuBar bar;
  Untitled0(bar);
  Untitled1(bar);
  Untitled2(bar);
  return bar;
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// MainWindow: the Qt window of an IcomWindow, its menu bar and its controls' widgets.
//
// The model outlives the view. The client area has the model's size exactly and, as the model
// says, cannot be resized.
#pragma once

#include <QMainWindow>
#include <QString>
#include <functional>
#include <memory>
#include <string_view>

#include "link/IcomWindow.h"
#include "platform/qt/ControlMirror.h"
#include "shell/qt/QtMenus.h"

namespace tarn {

class MainWindow : public QMainWindow {
 public:
  explicit MainWindow(IcomWindow& model);
  ~MainWindow() override;

  // Shows the window, then raises its open events and runs init, as the program starts.
  void ShowAndStart();

  QWidget* Client() const { return client_; }
  const WindowMirrors& Mirrors() const { return *mirrors_; }
  // The action of a menu item by the item's name; null when there is none.
  QAction* MenuAction(std::string_view itemName) const;

  // "Freq: X  Mode: Y  Filter: Z", as the three display widgets show them.
  QString StatusLine() const;
  // Called each time one of the three displays shows something new.
  std::function<void()> displaysChanged;

 private:
  void WatchDisplays();
  QString Shown(const char* displayName) const;

  IcomWindow& model_;
  QWidget* client_ = nullptr;
  MenuActions menus_;
  std::unique_ptr<WindowMirrors> mirrors_;  // goes before the widgets it writes into
};

}  // namespace tarn

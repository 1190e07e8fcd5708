// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/qt/MainWindow.h"

#include <QCoreApplication>
#include <QLabel>
#include <QLayout>

namespace tarn {

namespace {
constexpr const char* kDisplays[] = {"FreqDisplay", "ModeDisplay", "FilterDisplay"};
}  // namespace

MainWindow::MainWindow(IcomWindow& model) : model_(model) {
  const WindowLayout& shape = model.Layout();
  setWindowTitle(QString::fromStdString(shape.Title));
  menus_ = BuildMenus(*menuBar(), model.Menus(),
                      {[] { QCoreApplication::quit(); },
                       [this](std::string_view item) { model_.ChooseMenuItem(item); }});
  client_ = new QWidget(this);
  client_->setObjectName(QStringLiteral("Client"));
  client_->setFixedSize(shape.Width, shape.Height);
  setCentralWidget(client_);
  mirrors_ = std::make_unique<WindowMirrors>(model.Controls(), client_);
  // The window follows the client area and the menu bar; the user cannot stretch it.
  if (!shape.Resizeable) {
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
  }
  WatchDisplays();
}

MainWindow::~MainWindow() = default;

void MainWindow::ShowAndStart() {
  show();
  model_.Open();
  model_.init();
}

QAction* MainWindow::MenuAction(std::string_view itemName) const {
  const auto it = menus_.find(itemName);
  return it == menus_.end() ? nullptr : it->second;
}

void MainWindow::WatchDisplays() {
  for (const char* name : kDisplays) {
    if (ControlMirror* display = mirrors_->Find(name)) {
      display->shown = [this] {
        if (displaysChanged) displaysChanged();
      };
    }
  }
}

QString MainWindow::Shown(const char* displayName) const {
  const auto* label = client_->findChild<QLabel*>(QString::fromLatin1(displayName));
  return label ? label->text() : QString();
}

QString MainWindow::StatusLine() const {
  return QStringLiteral("Freq: %1  Mode: %2  Filter: %3")
      .arg(Shown(kDisplays[0]), Shown(kDisplays[1]), Shown(kDisplays[2]));
}

}  // namespace tarn

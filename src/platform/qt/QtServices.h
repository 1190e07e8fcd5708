// SPDX-License-Identifier: GPL-3.0-or-later
// The message box, the file chooser and the log of the window, on Qt.
#pragma once

#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/System.h"

namespace tarn {

// MsgBox as a dialog that does not block: the caller (often the port code inside a timer or a
// popup's event) goes on at once and the event loop keeps running. The same text while its box is
// still up raises that box instead of stacking another, since each popup choice at start-up
// retries the same port; every message is still counted in Told().
class QtMessages : public MessageSink {
 public:
  QtMessages() = default;
  ~QtMessages() override;
  QtMessages(const QtMessages&) = delete;
  QtMessages& operator=(const QtMessages&) = delete;

  // The window the boxes belong to; without one they open as windows of their own.
  void SetParent(QWidget* parent) { parent_ = parent; }
  void MsgBox(std::string_view text) override;
  // In the status bar of the window when it is a main window, shown only while there is a text,
  // so that the window keeps its size in ordinary use.
  void ShowStatus(std::string_view text) override;

  // Every message told since start, in order.
  const std::vector<std::string>& Told() const { return told_; }
  // The boxes on screen now.
  std::vector<QMessageBox*> OpenBoxes() const;

 private:
  QPointer<QWidget> parent_;
  std::vector<std::string> told_;
  std::vector<QPointer<QMessageBox>> boxes_;
};

// GetOpenFolderItem as a file dialog. The window asks by a file type's Mac type code ("TEXT");
// `filtersByType` gives the dialog's filter for each code the program knows. That filter comes
// first and "All files (*)" always last.
class QtFileChooser : public FileChooser {
 public:
  explicit QtFileChooser(std::map<std::string, QString> filtersByType)
      : filtersByType_(std::move(filtersByType)) {}

  void SetParent(QWidget* parent) { parent_ = parent; }
  // Modal: the caller needs the answer before it can go on.
  std::optional<std::string> GetOpenFolderItem(std::string_view filterType) override;

  // The dialog as it will be shown, not yet opened.
  std::unique_ptr<QFileDialog> MakeDialog(std::string_view filterType) const;

 private:
  QStringList NameFilters(std::string_view filterType) const;
  QPointer<QWidget> parent_;
  std::map<std::string, QString> filtersByType_;
};

// System.DebugLog on Qt's message log, category "tarnline.debuglog": one line per call, silenced
// with QT_LOGGING_RULES="tarnline.debuglog=false".
class QtLog : public LogSink {
 public:
  void DebugLog(std::string_view text) override;
};

}  // namespace tarn

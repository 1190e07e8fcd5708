// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtServices.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QStatusBar>
#include <algorithm>

#include "platform/qt/Accessible.h"

namespace tarn {

namespace {
Q_LOGGING_CATEGORY(lcDebugLog, "tarnline.debuglog")
}  // namespace

QtMessages::~QtMessages() {
  for (const QPointer<QMessageBox>& box : boxes_) delete box.data();
}

void QtMessages::MsgBox(std::string_view text) {
  told_.emplace_back(text);
  const QString message = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  boxes_.erase(std::remove_if(boxes_.begin(), boxes_.end(), [](const auto& b) { return !b; }),
               boxes_.end());
  for (const QPointer<QMessageBox>& box : boxes_) {
    if (box->isVisible() && box->text() == message) {
      box->raise();
      return;
    }
  }
  auto* box = new QMessageBox(QMessageBox::Warning, QCoreApplication::applicationName(), message,
                              QMessageBox::Ok, parent_);
  box->setAttribute(Qt::WA_DeleteOnClose);
  boxes_.emplace_back(box);
  // open(), not exec(): a modal loop here would hold the port code and everything behind it.
  box->open();
}

void QtMessages::ShowStatus(std::string_view text) {
  auto* window = qobject_cast<QMainWindow*>(parent_.data());
  if (!window) return;
  QStatusBar* bar = window->statusBar();
  const QString message = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  if (bar->currentMessage() == message) return;
  bar->showMessage(message);
  bar->setVisible(!text.empty());
  // The status bar tells a screen reader of its new message as a new name; a lost port is also
  // news that must be heard at once.
  if (!message.isEmpty()) TellAlert(*bar);
}

std::vector<QMessageBox*> QtMessages::OpenBoxes() const {
  std::vector<QMessageBox*> open;
  for (const QPointer<QMessageBox>& box : boxes_) {
    if (box && box->isVisible()) open.push_back(box.data());
  }
  return open;
}

QStringList QtFileChooser::NameFilters(std::string_view filterType) const {
  QStringList filters;
  const auto it = filtersByType_.find(std::string(filterType));
  if (it != filtersByType_.end()) filters << it->second;
  filters << QStringLiteral("All files (*)");
  return filters;
}

std::unique_ptr<QFileDialog> QtFileChooser::MakeDialog(std::string_view filterType) const {
  auto dialog = std::make_unique<QFileDialog>(parent_.data());
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setAcceptMode(QFileDialog::AcceptOpen);
  dialog->setNameFilters(NameFilters(filterType));
  return dialog;
}

std::optional<std::string> QtFileChooser::GetOpenFolderItem(std::string_view filterType) {
  const std::unique_ptr<QFileDialog> dialog = MakeDialog(filterType);
  if (dialog->exec() != QDialog::Accepted) return std::nullopt;
  const QStringList chosen = dialog->selectedFiles();
  if (chosen.isEmpty()) return std::nullopt;
  // The file is opened by its name in the file system's encoding, which need not be UTF-8.
  return QFile::encodeName(chosen.front()).toStdString();
}

void QtLog::DebugLog(std::string_view text) {
  qCInfo(lcDebugLog).noquote() << QString::fromUtf8(text.data(),
                                                    static_cast<qsizetype>(text.size()));
}

}  // namespace tarn

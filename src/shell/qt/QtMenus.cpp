// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/qt/QtMenus.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextCursor>

namespace tarn {

namespace {

struct StandardShortcut {
  std::string_view model;
  QKeySequence::StandardKey key;
};

constexpr StandardShortcut kStandard[] = {{"Cmd+Q", QKeySequence::Quit},
                                          {"Cmd+Z", QKeySequence::Undo},
                                          {"Cmd+X", QKeySequence::Cut},
                                          {"Cmd+C", QKeySequence::Copy},
                                          {"Cmd+V", QKeySequence::Paste}};

// The monitor's mirror keeps the user's edits apart from the bytes the logic appends and takes
// them back on the Undo key; Edit > Undo presses that key in it.
void PressUndoKey(QPlainTextEdit& edit) {
  const QKeyCombination undo = QKeySequence(QKeySequence::Undo)[0];
  QKeyEvent press(QEvent::KeyPress, undo.key(), undo.keyboardModifiers());
  QCoreApplication::sendEvent(&edit, &press);
}

struct FieldEdit {
  std::string_view item;
  void (*onLine)(QLineEdit&);
  void (*onText)(QPlainTextEdit&);
};

// Clear takes the selection away and nothing else, unlike the Delete key.
const FieldEdit kFieldEdits[] = {
    {"EditUndo", [](QLineEdit& e) { e.undo(); }, PressUndoKey},
    {"EditCut", [](QLineEdit& e) { e.cut(); }, [](QPlainTextEdit& e) { e.cut(); }},
    {"EditCopy", [](QLineEdit& e) { e.copy(); }, [](QPlainTextEdit& e) { e.copy(); }},
    {"EditPaste", [](QLineEdit& e) { e.paste(); }, [](QPlainTextEdit& e) { e.paste(); }},
    {"EditClear",
     [](QLineEdit& e) {
       if (e.hasSelectedText()) e.del();
     },
     [](QPlainTextEdit& e) { e.textCursor().removeSelectedText(); }},
};

const FieldEdit* FieldEditFor(std::string_view item) {
  for (const FieldEdit& edit : kFieldEdits) {
    if (edit.item == item) return &edit;
  }
  return nullptr;
}

// On the focused field only: a combo box or a button in focus has nothing to cut.
void ApplyToFocusedField(const FieldEdit& edit) {
  QWidget* focused = QApplication::focusWidget();
  if (auto* line = qobject_cast<QLineEdit*>(focused)) {
    edit.onLine(*line);
  } else if (auto* text = qobject_cast<QPlainTextEdit*>(focused)) {
    edit.onText(*text);
  }
}

QAction* AddItem(QMenu& menu, const MenuItem& item, const MenuCommands& commands) {
  if (item.Text == "-") {
    QAction* separator = menu.addSeparator();
    separator->setObjectName(QString::fromStdString(item.Name));
    return separator;
  }
  QAction* action = menu.addAction(QString::fromStdString(item.Text));
  action->setObjectName(QString::fromStdString(item.Name));
  action->setShortcuts(ShortcutsFor(item.KeyboardShortcut));
  if (item.isQuit) {
    action->setMenuRole(QAction::QuitRole);
    QObject::connect(action, &QAction::triggered, [quit = commands.quit] { quit(); });
  } else if (const FieldEdit* edit = FieldEditFor(item.Name)) {
    QObject::connect(action, &QAction::triggered, [edit] { ApplyToFocusedField(*edit); });
  } else {
    QObject::connect(action, &QAction::triggered,
                     [choose = commands.choose, name = item.Name] { choose(name); });
  }
  return action;
}

}  // namespace

QList<QKeySequence> ShortcutsFor(std::string_view modelShortcut) {
  if (modelShortcut.empty()) return {};
  for (const StandardShortcut& s : kStandard) {
    if (s.model != modelShortcut) continue;
    QList<QKeySequence> keys = QKeySequence::keyBindings(s.key);
    if (!keys.isEmpty()) return keys;
  }
  // Qt reads "Ctrl" as the command key on macOS and as Control elsewhere.
  QString text =
      QString::fromUtf8(modelShortcut.data(), static_cast<qsizetype>(modelShortcut.size()));
  text.replace(QStringLiteral("Cmd+"), QStringLiteral("Ctrl+"));
  return {QKeySequence(text)};
}

MenuActions BuildMenus(QMenuBar& bar, const MenuBar& model, const MenuCommands& commands) {
  MenuActions actions;
  for (const MenuItem& top : model.TopLevel()) {
    QMenu* menu = bar.addMenu(QString::fromStdString(top.Text));
    menu->setObjectName(QString::fromStdString(top.Name));
    QAction* title = menu->menuAction();
    title->setObjectName(QString::fromStdString(top.Name));
    actions[top.Name] = title;
    for (const MenuItem& item : top.children) actions[item.Name] = AddItem(*menu, item, commands);
    // A top-level item with neither a title nor items shows on Linux and Windows as a blank gap
    // in the bar that opens an empty menu: nothing a user can use. It is built like the others
    // and hidden, so the bar still holds every item of the model in its order.
    if (top.Text.empty() && top.children.empty()) title->setVisible(false);
  }
  return actions;
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The edit field mirrors: QLineEdit for a one-line field, QPlainTextEdit for the multiline monitor.
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>
#include <algorithm>
#include <vector>

#include "platform/qt/ControlMirror.h"

namespace tarn {

namespace {

// A key goes to the model's KeyDown before the field takes it, as the logic expects: the field's
// text is still the one before the key. Return and Enter reach it as the line end of control
// texts; keys that type nothing (arrows, modifiers) are the field's own business. True when the
// handler keeps the key from the field.
bool ForwardKey(EditField& model, const QKeyEvent& key) {
  if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) {
    return model.PressKey(EndOfLine);
  }
  const QString text = key.text();
  if (text.isEmpty()) return false;
  return model.PressKey(text.toStdString());
}

// What both edit mirrors share: the model, and its keys taken before the widget sees them.
class EditFieldMirror : public ControlMirror {
 public:
  EditFieldMirror(EditField& model, QWidget* widget) : ControlMirror(model, widget), field_(model) {
    widget->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == Widget() && event->type() == QEvent::KeyPress) {
      return ForwardKey(field_, static_cast<const QKeyEvent&>(*event));
    }
    return false;
  }

  EditField& field_;
};

class LineEditMirror : public EditFieldMirror {
 public:
  LineEditMirror(EditField& model, QWidget* parent)
      : EditFieldMirror(model, new QLineEdit(parent)) {
    edit_ = static_cast<QLineEdit*>(Widget());
    // The user's typing, cut, paste and undo, and a screen reader's or another assistive tool's
    // setText; the mirror's own setText is told apart by the guard.
    connect(edit_, &QLineEdit::textChanged, this, [this](const QString& text) {
      if (!Updating()) field_.SetText(text.toStdString());
    });
    Attach();
  }

 protected:
  void ShowModel() override {
    const QString text = QString::fromStdString(field_.Text());
    // Only a different text is set, so the cursor of a user who is typing does not jump.
    if (edit_->text() != text) edit_->setText(text);
  }

 private:
  QLineEdit* edit_ = nullptr;
};

// One edit of the user's in the monitor: at `at`, `removed` gave way to `inserted`.
struct UserEdit {
  qsizetype at = 0;
  QString removed;
  QString inserted;
};

// The edit that turns `before` into `after`: what lies between their common start and end.
UserEdit Difference(const QString& before, const QString& after) {
  const qsizetype shorter = std::min(before.size(), after.size());
  qsizetype head = 0;
  while (head < shorter && before[head] == after[head]) ++head;
  qsizetype tail = 0;
  while (tail < shorter - head &&
         before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
    ++tail;
  return {head, before.mid(head, before.size() - head - tail),
          after.mid(head, after.size() - head - tail)};
}

// The data monitor: the logic appends received bytes through the selection and cuts old text from
// the front. The widget follows the model's text and stays scrolled to its end.
//
// The widget's own undo history stays off, as the appends from the port would pile up in it for as
// long as the program runs and Undo would take back the bytes received, not the user's edit. The
// mirror keeps the user's edits instead, moved along with the logic's cuts from the front.
class PlainTextMirror : public EditFieldMirror {
 public:
  PlainTextMirror(EditField& model, QWidget* parent)
      : EditFieldMirror(model, new QPlainTextEdit(parent)) {
    edit_ = static_cast<QPlainTextEdit*>(Widget());
    edit_->setUndoRedoEnabled(false);
    // Tab moves to the next control, as in every other field: the monitor takes no tabs.
    edit_->setTabChangesFocus(true);
    // textChanged also comes from our own writes; the guard tells them apart.
    connect(edit_, &QPlainTextEdit::textChanged, this, [this] {
      if (!Updating()) TakeUsersEdit();
    });
    Attach();
  }

 protected:
  // The Undo key, typed or sent by Edit > Undo, takes back the user's last edit.
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == Widget() && event->type() == QEvent::KeyPress &&
        static_cast<const QKeyEvent*>(event)->matches(QKeySequence::Undo)) {
      UndoUsersEdit();
      return true;
    }
    return EditFieldMirror::eventFilter(watched, event);
  }

  void ShowModel() override {
    const QString text = QString::fromStdString(field_.Text());
    const QString onScreen = edit_->toPlainText();
    if (onScreen == text) return;
    FollowCut(onScreen, text);
    if (!onScreen.isEmpty() && text.startsWith(onScreen)) {
      // The common case, an append: only the new part is laid out.
      QTextCursor end(edit_->document());
      end.movePosition(QTextCursor::End);
      end.insertText(text.mid(onScreen.size()));
    } else {
      edit_->setPlainText(text);
    }
    QScrollBar* bar = edit_->verticalScrollBar();
    bar->setValue(bar->maximum());
  }

 private:
  // Enough for a user's corrections; the history must not grow with a long session of typing.
  static constexpr std::size_t kUndoDepth = 100;

  void TakeUsersEdit() {
    const QString now = edit_->toPlainText();
    if (!undoing_) {
      edits_.push_back(Difference(QString::fromStdString(field_.Text()), now));
      if (edits_.size() > kUndoDepth) edits_.erase(edits_.begin());
    }
    field_.SetText(now.toStdString());
  }

  // An append moves no edit. A cut from the front moves every edit by its length and takes those
  // inside it, with all older ones; any other change by the logic leaves nothing to undo.
  void FollowCut(const QString& onScreen, const QString& text) {
    if (text.startsWith(onScreen)) return;
    const qsizetype cut = onScreen.size() - text.size();
    if (cut <= 0 || !onScreen.endsWith(text)) {
      edits_.clear();
      return;
    }
    const auto hit = std::find_if(edits_.rbegin(), edits_.rend(),
                                  [cut](const UserEdit& e) { return e.at < cut; });
    edits_.erase(edits_.begin(), hit.base());
    for (UserEdit& e : edits_) e.at -= cut;
  }

  void UndoUsersEdit() {
    if (edits_.empty()) return;
    const UserEdit last = edits_.back();
    edits_.pop_back();
    if (edit_->toPlainText().mid(last.at, last.inserted.size()) != last.inserted) {
      edits_.clear();  // not where it was left: nothing safe to take back
      return;
    }
    QTextCursor cursor(edit_->document());
    cursor.setPosition(static_cast<int>(last.at));
    cursor.setPosition(static_cast<int>(last.at + last.inserted.size()), QTextCursor::KeepAnchor);
    undoing_ = true;
    cursor.insertText(last.removed);  // reaches the model through textChanged, as an edit does
    undoing_ = false;
    edit_->setTextCursor(cursor);
  }

  QPlainTextEdit* edit_ = nullptr;
  std::vector<UserEdit> edits_;  // oldest first
  bool undoing_ = false;
};

}  // namespace

std::unique_ptr<ControlMirror> MakeEditMirror(EditField& model, QWidget* parent) {
  if (model.multiline) return std::make_unique<PlainTextMirror>(model, parent);
  return std::make_unique<LineEditMirror>(model, parent);
}

}  // namespace tarn

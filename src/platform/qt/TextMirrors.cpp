// The edit field mirrors: QLineEdit for a one-line field, QPlainTextEdit for the multiline monitor.
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>

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
    // textEdited comes from the user only (typing, cut, paste, undo), never from setText.
    connect(edit_, &QLineEdit::textEdited, this, [this](const QString& text) {
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

// The data monitor: the logic appends received bytes through the selection and cuts old text from
// the front. The widget follows the model's text and stays scrolled to its end.
class PlainTextMirror : public EditFieldMirror {
 public:
  PlainTextMirror(EditField& model, QWidget* parent)
      : EditFieldMirror(model, new QPlainTextEdit(parent)) {
    edit_ = static_cast<QPlainTextEdit*>(Widget());
    // Appends from the port would pile up in the undo history for as long as the program runs.
    edit_->setUndoRedoEnabled(false);
    // Tab moves to the next control, as in every other field: the monitor takes no tabs.
    edit_->setTabChangesFocus(true);
    // textChanged also comes from our own writes; the guard tells them apart.
    connect(edit_, &QPlainTextEdit::textChanged, this, [this] {
      if (!Updating()) field_.SetText(edit_->toPlainText().toStdString());
    });
    Attach();
  }

 protected:
  void ShowModel() override {
    const QString text = QString::fromStdString(field_.Text());
    const QString onScreen = edit_->toPlainText();
    if (onScreen == text) return;
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
  QPlainTextEdit* edit_ = nullptr;
};

}  // namespace

std::unique_ptr<ControlMirror> MakeEditMirror(EditField& model, QWidget* parent) {
  if (model.multiline) return std::make_unique<PlainTextMirror>(model, parent);
  return std::make_unique<LineEditMirror>(model, parent);
}

}  // namespace tarn

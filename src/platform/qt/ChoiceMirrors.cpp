// SPDX-License-Identifier: GPL-3.0-or-later
// The mirrors of popups, static texts, check boxes and push buttons.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "platform/qt/Accessible.h"
#include "platform/qt/ControlMirror.h"

namespace tarn {

namespace {

QString ToQt(const std::string& text) {
  return QString::fromStdString(text);
}

// A combo box that tells before its list shows, by mouse or by keyboard.
class OpeningComboBox : public QComboBox {
 public:
  using QComboBox::QComboBox;
  std::function<void()> opening;

  void showPopup() override {
    if (opening) opening();
    QComboBox::showPopup();
  }
};

class PopupMirror : public ControlMirror {
 public:
  PopupMirror(PopupMenu& model, QWidget* parent)
      : ControlMirror(model, new OpeningComboBox(parent)), popup_(model) {
    auto* combo = static_cast<OpeningComboBox*>(Widget());
    combo->opening = [this] { popup_.OpenList(); };
    combo_ = combo;
    // activated is the user's choice only, and comes also when the row chosen is the one shown:
    // choosing the same port again is how a lost port is opened afresh.
    connect(combo_, &QComboBox::activated, this, [this](int row) {
      if (!Updating()) popup_.SetListIndex(row);
    });
    Attach();
  }

 protected:
  void ShowModel() override {
    const std::vector<std::string>& rows = popup_.Rows();
    if (rowsShown_ != rows) {
      // Rows added at the end, as ports that appear are, leave the rows shown alone.
      const bool appended = rows.size() > rowsShown_.size() &&
                            std::equal(rowsShown_.begin(), rowsShown_.end(), rows.begin());
      if (!appended) {
        combo_->clear();
        rowsShown_.clear();
      }
      for (std::size_t i = rowsShown_.size(); i < rows.size(); ++i) combo_->addItem(ToQt(rows[i]));
      rowsShown_ = rows;
    }
    // -1 shows an empty combo, as a popup without a selection must.
    const int row = static_cast<int>(popup_.ListIndex());
    if (combo_->currentIndex() != row) combo_->setCurrentIndex(row);
  }

 private:
  PopupMenu& popup_;
  QComboBox* combo_ = nullptr;
  std::vector<std::string> rowsShown_;
};

// A label with an accessible name is a display: each new text of it is told to a screen reader,
// and its appearing, as the jam indicator's, is told as an alert.
class LabelMirror : public ControlMirror {
 public:
  LabelMirror(StaticText& model, QWidget* parent)
      : ControlMirror(model, new QLabel(parent)), text_(model), shown_(model.Visible()) {
    label_ = static_cast<QLabel*>(Widget());
    // What the radio or the port sends is shown as it is, never read as markup.
    label_->setTextFormat(Qt::PlainText);
    Attach();
  }

 protected:
  void ShowModel() override {
    const bool display = !text_.accessibleName.empty();
    const QString text = ToQt(text_.Text());
    const QString before = label_->text();
    if (before != text) {
      label_->setText(text);
      if (display) TellTextChanged(*label_, before, text);
    }
    if (display && text_.Visible() && !shown_) TellAlert(*label_);
    shown_ = text_.Visible();
  }

 private:
  StaticText& text_;
  QLabel* label_ = nullptr;
  bool shown_;
};

class CheckBoxMirror : public ControlMirror {
 public:
  CheckBoxMirror(CheckBox& model, QWidget* parent)
      : ControlMirror(model, new QCheckBox(parent)), check_(model) {
    box_ = static_cast<QCheckBox*>(Widget());
    // The user's click or space bar, and a screen reader's toggle action, which clicks nothing;
    // the mirror's own setChecked is told apart by the guard.
    connect(box_, &QCheckBox::toggled, this, [this](bool checked) {
      if (!Updating()) check_.SetValue(checked);
    });
    Attach();
  }

 protected:
  void ShowModel() override {
    box_->setText(ToQt(check_.caption));
    if (box_->isChecked() != check_.Value()) box_->setChecked(check_.Value());
  }

 private:
  CheckBox& check_;
  QCheckBox* box_ = nullptr;
};

class ButtonMirror : public ControlMirror {
 public:
  ButtonMirror(PushButton& model, QWidget* parent)
      : ControlMirror(model, new QPushButton(parent)), push_(model) {
    button_ = static_cast<QPushButton*>(Widget());
    connect(button_, &QPushButton::clicked, this, [this] {
      if (!Updating()) push_.Push();
    });
    Attach();
  }

 protected:
  void ShowModel() override { button_->setText(ToQt(push_.caption)); }

 private:
  PushButton& push_;
  QPushButton* button_ = nullptr;
};

}  // namespace

std::unique_ptr<ControlMirror> MakePopupMirror(PopupMenu& model, QWidget* parent) {
  return std::make_unique<PopupMirror>(model, parent);
}

std::unique_ptr<ControlMirror> MakeLabelMirror(StaticText& model, QWidget* parent) {
  return std::make_unique<LabelMirror>(model, parent);
}

std::unique_ptr<ControlMirror> MakeCheckBoxMirror(CheckBox& model, QWidget* parent) {
  return std::make_unique<CheckBoxMirror>(model, parent);
}

std::unique_ptr<ControlMirror> MakeButtonMirror(PushButton& model, QWidget* parent) {
  return std::make_unique<ButtonMirror>(model, parent);
}

}  // namespace tarn

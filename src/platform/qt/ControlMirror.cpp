// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/ControlMirror.h"

#include <QColor>
#include <QFont>
#include <QLabel>
#include <QPalette>
#include <algorithm>

#include "platform/qt/Accessible.h"

namespace tarn {

ControlMirror::ControlMirror(Control& model, QWidget* widget) : model_(model), widget_(widget) {
  widget->setObjectName(QString::fromStdString(model.Name()));
  widget->setAccessibleName(QString::fromStdString(model.accessibleName));
  widget->setAccessibleDescription(QString::fromStdString(model.accessibleDescription));
}

ControlMirror::~ControlMirror() {
  model_.viewChanged = nullptr;
}

void ControlMirror::Attach() {
  ApplyLayout();
  Refresh();
  model_.viewChanged = [this] { Refresh(); };
}

void ControlMirror::ApplyLayout() {
  const Bounds& b = model_.bounds;
  widget_->setGeometry(b.left, b.top, b.width, b.height);
  if (model_.textSize > 0) {
    // The window was laid out in pixels for screens of 72 dots per inch, where a text size in
    // points is the same number of pixels. Pixels keep every text inside its control's bounds on
    // any screen; points would grow it by a third at 96 dpi and clip it.
    QFont font = widget_->font();
    font.setPixelSize(model_.textSize);
    widget_->setFont(font);
  }
  if (model_.textColor != 0) {
    // 0 is the style's own text colour (black on a light theme), so a dark theme stays readable.
    const QColor colour(QRgb(model_.textColor));
    QPalette palette = widget_->palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    palette.setColor(QPalette::ButtonText, colour);
    widget_->setPalette(palette);
  }
}

void ControlMirror::Refresh() {
  if (!widget_) return;
  const bool wasUpdating = updating_;
  updating_ = true;
  widget_->setVisible(model_.Visible());
  widget_->setEnabled(model_.Enabled());
  ShowModel();
  updating_ = wasUpdating;
  if (shown) shown();
}

std::unique_ptr<ControlMirror> MakeMirror(Control& model, QWidget* parent) {
  switch (model.Kind()) {
    case ControlKind::PopupMenu:
      return MakePopupMirror(static_cast<PopupMenu&>(model), parent);
    case ControlKind::EditField:
      return MakeEditMirror(static_cast<EditField&>(model), parent);
    case ControlKind::StaticText:
      return MakeLabelMirror(static_cast<StaticText&>(model), parent);
    case ControlKind::CheckBox:
      return MakeCheckBoxMirror(static_cast<CheckBox&>(model), parent);
    case ControlKind::PushButton:
      return MakeButtonMirror(static_cast<PushButton&>(model), parent);
    case ControlKind::Timer:
      break;
  }
  return nullptr;
}

WindowMirrors::WindowMirrors(const std::vector<Control*>& controls, QWidget* parent) {
  InstallNamedWidgetAccessibility();
  for (Control* control : controls) {
    if (auto mirror = MakeMirror(*control, parent)) mirrors_.push_back(std::move(mirror));
  }
  ChainTabOrder();
  TieLabels();
}

ControlMirror* WindowMirrors::Find(std::string_view name) const {
  const auto it = std::find_if(mirrors_.begin(), mirrors_.end(),
                               [&](const auto& m) { return m->Model().Name() == name; });
  return it == mirrors_.end() ? nullptr : it->get();
}

// Labels take no focus, so they stay out of the chain; the rest follow their tab index.
void WindowMirrors::ChainTabOrder() {
  std::vector<ControlMirror*> focusable;
  for (const auto& m : mirrors_) {
    if (m->Widget()->focusPolicy() != Qt::NoFocus) focusable.push_back(m.get());
  }
  std::stable_sort(focusable.begin(), focusable.end(), [](const auto* a, const auto* b) {
    return a->Model().tabIndex < b->Model().tabIndex;
  });
  for (std::size_t i = 1; i < focusable.size(); ++i) {
    QWidget::setTabOrder(focusable[i - 1]->Widget(), focusable[i]->Widget());
  }
}

// A label's buddy is the label relation a screen reader follows. No label text holds a mnemonic,
// so the buddy changes nothing on screen or on the keyboard.
void WindowMirrors::TieLabels() {
  for (const auto& m : mirrors_) {
    if (m->Model().Kind() != ControlKind::StaticText) continue;
    const Control* named = static_cast<const StaticText&>(m->Model()).labelFor;
    if (ControlMirror* target = named ? Find(named->Name()) : nullptr)
      static_cast<QLabel*>(m->Widget())->setBuddy(target->Widget());
  }
}

}  // namespace tarn

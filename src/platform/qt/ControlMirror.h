// SPDX-License-Identifier: GPL-3.0-or-later
// Control mirrors: one real Qt widget per control model, kept in step both ways.
//
// Model to widget: the model's `viewChanged` makes the mirror copy the model's value, visibility
// and enabled state into the widget. Widget to model: a user's choice, click, key or edit goes to
// the model through the same calls the logic uses, so the control's event is raised exactly as in
// the tests without a display. While a mirror writes into its widget it ignores the widget's
// signals, so a change by the logic never comes back as a user action.
//
// Layout (bounds, text size, colour, tab order) is applied once: the models fix it at creation.
// A mirror must not outlive its model; its widget belongs to the Qt parent given at creation.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/Controls.h"

namespace tarn {

class ControlMirror : public QObject {
 public:
  ~ControlMirror() override;
  ControlMirror(const ControlMirror&) = delete;
  ControlMirror& operator=(const ControlMirror&) = delete;

  Control& Model() const { return model_; }
  QWidget* Widget() const { return widget_; }

  // Called after the widget has taken a change of the model, for observers of what is on screen.
  std::function<void()> shown;

 protected:
  ControlMirror(Control& model, QWidget* widget);

  // Applies the layout, shows the model and hooks the model's view callback. Derived classes call
  // it last in their constructor, once their widget is set up.
  void Attach();
  // Copies the model's value into the widget; runs with the guard up.
  virtual void ShowModel() = 0;
  // True while the mirror itself is writing into the widget.
  bool Updating() const { return updating_; }

 private:
  void Refresh();
  void ApplyLayout();

  Control& model_;
  QPointer<QWidget> widget_;
  bool updating_ = false;
};

// The mirror of one control, its widget made as a child of `parent`; null for a timer, which has
// no widget (its QTimer lives in the clock).
std::unique_ptr<ControlMirror> MakeMirror(Control& model, QWidget* parent);

// The mirrors of all controls of a window, with the keyboard focus chain in tab-index order and
// each label tied to the control it names.
class WindowMirrors {
 public:
  WindowMirrors(const std::vector<Control*>& controls, QWidget* parent);

  ControlMirror* Find(std::string_view name) const;
  const std::vector<std::unique_ptr<ControlMirror>>& All() const { return mirrors_; }

 private:
  void ChainTabOrder();
  void TieLabels();
  std::vector<std::unique_ptr<ControlMirror>> mirrors_;
};

// The concrete mirrors, one per kind of control.
std::unique_ptr<ControlMirror> MakePopupMirror(PopupMenu& model, QWidget* parent);
std::unique_ptr<ControlMirror> MakeEditMirror(EditField& model, QWidget* parent);
std::unique_ptr<ControlMirror> MakeLabelMirror(StaticText& model, QWidget* parent);
std::unique_ptr<ControlMirror> MakeCheckBoxMirror(CheckBox& model, QWidget* parent);
std::unique_ptr<ControlMirror> MakeButtonMirror(PushButton& model, QWidget* parent);

}  // namespace tarn

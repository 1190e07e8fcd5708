// SPDX-License-Identifier: GPL-3.0-or-later
// Control models: the truth of every control on the window.
//
// The window's logic reads and writes these models and nothing else; a view (a Qt widget, or
// nothing at all in the tests) mirrors a model both ways. A model tells its view of every change
// through `viewChanged`; the view tells the model of a user's choice, click, key or edit through
// the same calls the logic uses, which raise the control's event.
//
// Which assignments raise events:
//  - Values applied while the window is being built raise nothing: a control's handler is attached
//    only after its creation values.
//  - From then on every assignment of PopupMenu::SetListIndex and EditField::SetText/SetSelText
//    raises Change/TextChange once, also when the value stays the same. Start-up relies on it: the
//    rate field is assigned the text it already holds and must still reach its handler.
//  - A ListIndex outside -1..ListCount-1 is ignored and raises nothing; a popup without rows reads
//    -1, and adding rows selects none.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Text.h"

namespace tarn {

enum class ControlKind { PopupMenu, EditField, StaticText, CheckBox, PushButton, Timer };

struct Bounds {
  int left = 0, top = 0, width = 0, height = 0;
};

class Control {
 public:
  Control(std::string name, ControlKind kind) : name_(std::move(name)), kind_(kind) {}
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  const std::string& Name() const { return name_; }
  ControlKind Kind() const { return kind_; }

  bool Visible() const { return visible_; }
  void SetVisible(bool v);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool e);

  // Layout, applied once at creation. TextSize 0 means the system's default size.
  Bounds bounds;
  int tabIndex = -1;
  int textSize = 0;
  std::uint32_t textColor = 0;  // 0x00RRGGBB
  // What a screen reader says of the control, in the window's words: a name where its own text
  // does not say what it is, and a description where the name alone leaves a newcomer guessing.
  // A static text with a name is a display: the name stays while its text changes.
  std::string accessibleName;
  std::string accessibleDescription;

  std::function<void()> viewChanged;

 protected:
  void NotifyView() const {
    if (viewChanged) viewChanged();
  }

 private:
  std::string name_;
  ControlKind kind_;
  bool visible_ = true;
  bool enabled_ = true;
};

class PopupMenu : public Control {
 public:
  explicit PopupMenu(std::string name) : Control(std::move(name), ControlKind::PopupMenu) {}

  // Creation: rows from an initial value of carriage-return separated pieces, and the first index.
  void InitRows(std::string_view initialValue, i64 listIndex = 0);

  void AddRow(std::string text);
  i64 ListCount() const { return static_cast<i64>(rows_.size()); }
  i64 ListIndex() const { return listIndex_; }
  void SetListIndex(i64 index);
  std::string Text() const;  // the selected row, empty when none
  const std::vector<std::string>& Rows() const { return rows_; }
  // The user is about to see the rows: the view calls it before its list shows, so that the
  // handler of ListOpening can bring the rows up to date first.
  void OpenList();

  std::function<void(PopupMenu&)> Change;
  std::function<void(PopupMenu&)> ListOpening;

 private:
  std::vector<std::string> rows_;
  i64 listIndex_ = -1;
};

class EditField : public Control {
 public:
  explicit EditField(std::string name) : Control(std::move(name), ControlKind::EditField) {}

  void InitText(std::string text) { text_ = std::move(text); }
  bool multiline = false;

  const std::string& Text() const { return text_; }
  void SetText(std::string text);

  // The selection counts characters. Setting SelStart leaves an empty selection there, so that a
  // following SetSelText inserts.
  i64 SelStart() const { return selStart_; }
  void SetSelStart(i64 start);
  i64 SelLength() const { return selLength_; }
  void SetSelLength(i64 length);
  std::string SelText() const;
  void SetSelText(std::string_view replacement);

  // A key pressed in the field: the handler's true keeps the key from the field.
  bool PressKey(std::string_view key);

  std::function<void(EditField&)> TextChange;
  std::function<bool(EditField&, std::string_view key)> KeyDown;

 private:
  void RaiseTextChange();
  std::string text_;
  i64 selStart_ = 0;
  i64 selLength_ = 0;
};

class StaticText : public Control {
 public:
  explicit StaticText(std::string name) : Control(std::move(name), ControlKind::StaticText) {}
  void InitText(std::string text) { text_ = std::move(text); }
  const std::string& Text() const { return text_; }
  void SetText(std::string text);
  // The control this text names on screen, so that a screen reader finds the two together.
  const Control* labelFor = nullptr;

 private:
  std::string text_;
};

class CheckBox : public Control {
 public:
  explicit CheckBox(std::string name) : Control(std::move(name), ControlKind::CheckBox) {}
  std::string caption;
  bool Value() const { return value_; }
  void SetValue(bool v);

 private:
  bool value_ = false;
};

class PushButton : public Control {
 public:
  explicit PushButton(std::string name) : Control(std::move(name), ControlKind::PushButton) {}
  std::string caption;
  // A click: raises Action while the button is enabled.
  void Push();
  std::function<void(PushButton&)> Action;
};

}  // namespace tarn

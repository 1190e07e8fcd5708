// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Controls.h"

#include <algorithm>

namespace tarn {

void Control::SetVisible(bool v) {
  visible_ = v;
  NotifyView();
}

void Control::SetEnabled(bool e) {
  enabled_ = e;
  NotifyView();
}

void PopupMenu::InitRows(std::string_view initialValue, i64 listIndex) {
  rows_.clear();
  std::size_t start = 0;
  while (!initialValue.empty() && start <= initialValue.size()) {
    const std::size_t cr = initialValue.find('\r', start);
    rows_.emplace_back(initialValue.substr(start, cr == std::string_view::npos ? cr : cr - start));
    if (cr == std::string_view::npos) break;
    start = cr + 1;
  }
  listIndex_ = (listIndex >= 0 && listIndex < ListCount()) ? listIndex : -1;
}

void PopupMenu::AddRow(std::string text) {
  rows_.push_back(std::move(text));
  NotifyView();
}

void PopupMenu::SetListIndex(i64 index) {
  if (index < -1 || index >= ListCount()) return;
  listIndex_ = index;
  NotifyView();
  if (Change) Change(*this);
}

void PopupMenu::OpenList() {
  if (ListOpening) ListOpening(*this);
}

std::string PopupMenu::Text() const {
  if (listIndex_ < 0 || listIndex_ >= ListCount()) return {};
  return rows_[static_cast<std::size_t>(listIndex_)];
}

void EditField::SetText(std::string text) {
  text_ = std::move(text);
  selStart_ = std::min(selStart_, Utf8Length(text_));
  selLength_ = 0;
  RaiseTextChange();
}

void EditField::SetSelStart(i64 start) {
  selStart_ = std::clamp<i64>(start, 0, Utf8Length(text_));
  selLength_ = 0;
}

void EditField::SetSelLength(i64 length) {
  selLength_ = std::clamp<i64>(length, 0, Utf8Length(text_) - selStart_);
}

std::string EditField::SelText() const {
  const std::size_t from = Utf8Offset(text_, selStart_);
  const std::size_t to = Utf8Offset(text_, selStart_ + selLength_);
  return text_.substr(from, to - from);
}

void EditField::SetSelText(std::string_view replacement) {
  const std::size_t from = Utf8Offset(text_, selStart_);
  const std::size_t to = Utf8Offset(text_, selStart_ + selLength_);
  text_.replace(from, to - from, replacement);
  selStart_ += Utf8Length(replacement);
  selLength_ = 0;
  RaiseTextChange();
}

bool EditField::PressKey(std::string_view key) {
  return KeyDown ? KeyDown(*this, key) : false;
}

void EditField::RaiseTextChange() {
  NotifyView();
  if (TextChange) TextChange(*this);
}

void StaticText::SetText(std::string text) {
  if (text == text_) return;  // a poll answer that repeats the display costs the view nothing
  text_ = std::move(text);
  NotifyView();
}

void CheckBox::SetValue(bool v) {
  value_ = v;
  NotifyView();
}

void PushButton::Push() {
  if (Enabled() && Action) Action(*this);
}

}  // namespace tarn

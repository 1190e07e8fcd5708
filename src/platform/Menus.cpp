// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Menus.h"

namespace tarn {

namespace {

const MenuItem* FindIn(const std::vector<MenuItem>& items, std::string_view name) {
  for (const MenuItem& item : items) {
    if (item.Name == name) return &item;
    if (const MenuItem* child = FindIn(item.children, name)) return child;
  }
  return nullptr;
}

}  // namespace

const MenuItem* MenuBar::Find(std::string_view name) const {
  return FindIn(items_, name);
}

std::vector<MenuItem>& MenuBar::AddMenu(MenuItem menu) {
  items_.push_back(std::move(menu));
  return items_.back().children;
}

}  // namespace tarn

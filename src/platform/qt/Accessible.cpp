// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/Accessible.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLabel>

namespace tarn {

namespace {

// A read-only text without a caret or a selection: the label's text, under a name that stays.
class DisplayInterface : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit DisplayInterface(QLabel* label) : QAccessibleWidget(label, QAccessible::StaticText) {}

  using QAccessibleWidget::text;
  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QString text(int start, int end) const override { return Shown().mid(start, end - start); }
  int characterCount() const override { return static_cast<int>(Shown().size()); }
  void selection(int, int* start, int* end) const override { *start = *end = 0; }
  int selectionCount() const override { return 0; }
  void addSelection(int, int) override {}
  void removeSelection(int) override {}
  void setSelection(int, int, int) override {}
  int cursorPosition() const override { return 0; }
  void setCursorPosition(int) override {}
  QRect characterRect(int) const override { return {}; }
  int offsetAtPoint(const QPoint&) const override { return -1; }
  void scrollToSubstring(int, int) override {}
  QString attributes(int offset, int* start, int* end) const override {
    *start = *end = offset;
    return {};
  }

 private:
  QString Shown() const { return static_cast<const QLabel*>(widget())->text(); }
};

// A combo box named by what it chooses; its row is its value, its list its one child.
class NamedComboInterface : public QAccessibleWidget {
 public:
  explicit NamedComboInterface(QComboBox* combo)
      : QAccessibleWidget(combo, QAccessible::ComboBox) {}

  QString text(QAccessible::Text type) const override {
    if (type == QAccessible::Value) return Combo()->currentText();
    return QAccessibleWidget::text(type);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.expandable = true;
    state.expanded = Combo()->view()->isVisible();
    return state;
  }
  int childCount() const override { return 1; }
  QAccessibleInterface* child(int index) const override {
    return index == 0 ? QAccessible::queryAccessibleInterface(Combo()->view()) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child && child->object() == Combo()->view() ? 0 : -1;
  }
  QStringList actionNames() const override {
    return QStringList{showMenuAction()} + QAccessibleWidget::actionNames();
  }
  void doAction(const QString& action) override {
    if (action == showMenuAction()) {
      Combo()->showPopup();
    } else {
      QAccessibleWidget::doAction(action);
    }
  }

 private:
  QComboBox* Combo() const { return static_cast<QComboBox*>(widget()); }
};

QAccessibleInterface* NamedWidgetFactory(const QString& className, QObject* object) {
  auto* widget = qobject_cast<QWidget*>(object);
  if (!widget || widget->accessibleName().isEmpty()) return nullptr;
  if (className == QLatin1String("QLabel"))
    return new DisplayInterface(static_cast<QLabel*>(widget));
  if (className == QLatin1String("QComboBox"))
    return new NamedComboInterface(static_cast<QComboBox*>(widget));
  return nullptr;
}

}  // namespace

void InstallNamedWidgetAccessibility() {
  static const bool installed = (QAccessible::installFactory(NamedWidgetFactory), true);
  (void)installed;
}

void TellTextChanged(QLabel& display, const QString& before, const QString& now) {
  QAccessibleTextUpdateEvent event(&display, 0, before, now);
  QAccessible::updateAccessibility(&event);
}

void TellAlert(QWidget& widget) {
  QAccessibleEvent event(&widget, QAccessible::Alert);
  QAccessible::updateAccessibility(&event);
}

}  // namespace tarn

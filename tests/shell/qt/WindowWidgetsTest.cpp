// The window as it stands: 36 controls, 31 of them widgets with their names, classes, places,
// texts and rows, the five timers without one; the title, the size, the buttons of the frame and
// the order of Tab.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <string>
#include <vector>

#include "shell/qt/ViewHarness.h"

namespace tarn::test {
namespace {

const char* ExpectedClass(const Control& c) {
  switch (c.Kind()) {
    case ControlKind::PopupMenu:
      return "QComboBox";
    case ControlKind::EditField:
      return static_cast<const EditField&>(c).multiline ? "QPlainTextEdit" : "QLineEdit";
    case ControlKind::StaticText:
      return "QLabel";
    case ControlKind::CheckBox:
      return "QCheckBox";
    case ControlKind::PushButton:
      return "QPushButton";
    case ControlKind::Timer:
      break;
  }
  return "";
}

// What the widget shows, in the model's terms: text, caption, or the rows.
std::string ShownText(const QWidget* w) {
  if (auto* l = qobject_cast<const QLabel*>(w)) return l->text().toStdString();
  if (auto* e = qobject_cast<const QLineEdit*>(w)) return e->text().toStdString();
  if (auto* t = qobject_cast<const QPlainTextEdit*>(w)) return t->toPlainText().toStdString();
  if (auto* b = qobject_cast<const QAbstractButton*>(w)) return b->text().toStdString();
  return {};
}

std::string ModelText(const Control& c) {
  switch (c.Kind()) {
    case ControlKind::StaticText:
      return static_cast<const StaticText&>(c).Text();
    case ControlKind::EditField:
      return static_cast<const EditField&>(c).Text();
    case ControlKind::CheckBox:
      return static_cast<const CheckBox&>(c).caption;
    case ControlKind::PushButton:
      return static_cast<const PushButton&>(c).caption;
    default:
      return {};
  }
}

TEST(WindowWidgets, EveryControlButTheTimersIsAWidgetOfItsKindInItsPlace) {
  ViewHarness h;
  h.Start();
  int widgets = 0, timers = 0;
  for (const Control* c : h.w->Controls()) {
    const QString name = QString::fromStdString(c->Name());
    QWidget* widget = h.view->findChild<QWidget*>(name);
    if (c->Kind() == ControlKind::Timer) {
      EXPECT_EQ(widget, nullptr) << c->Name();
      ++timers;
      continue;
    }
    ASSERT_NE(widget, nullptr) << c->Name();
    ++widgets;
    EXPECT_STREQ(widget->metaObject()->className(), ExpectedClass(*c)) << c->Name();
    EXPECT_EQ(widget->parentWidget(), h.view->Client()) << c->Name();
    const Bounds& b = c->bounds;
    EXPECT_EQ(widget->geometry(), QRect(b.left, b.top, b.width, b.height)) << c->Name();
    EXPECT_EQ(widget->isHidden(), !c->Visible()) << c->Name();
    if (c->Kind() != ControlKind::PopupMenu) {
      EXPECT_EQ(ShownText(widget), ModelText(*c)) << c->Name();
    }
  }
  EXPECT_EQ(widgets, 31);
  EXPECT_EQ(timers, 5);
}

TEST(WindowWidgets, PopupsShowTheirRowsAndSelection) {
  ViewHarness h;
  h.Start();
  for (const Control* c : h.w->Controls()) {
    if (c->Kind() != ControlKind::PopupMenu) continue;
    const auto& popup = static_cast<const PopupMenu&>(*c);
    auto* combo = h.Widget<QComboBox>(c->Name().c_str());
    ASSERT_NE(combo, nullptr) << c->Name();
    ASSERT_EQ(combo->count(), popup.ListCount()) << c->Name();
    for (int i = 0; i < combo->count(); ++i) {
      EXPECT_EQ(combo->itemText(i).toStdString(), popup.Rows()[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(combo->currentIndex(), popup.ListIndex()) << c->Name();
  }
  auto* baud = h.Widget<QComboBox>("BaudPopup");
  EXPECT_EQ(baud->count(), 14);
  EXPECT_EQ(baud->currentText(), "9600");
  EXPECT_EQ(h.Widget<QComboBox>("PopupMode")->itemText(9), "SYNC-AM");
  EXPECT_EQ(h.Widget<QComboBox>("SerialPopup")->itemText(0), "port0");
}

TEST(WindowWidgets, SizesAndColourComeFromTheModels) {
  ViewHarness h;
  h.Start();
  EXPECT_EQ(h.Widget<QLabel>("FreqDisplay")->font().pixelSize(), 16);
  EXPECT_EQ(h.Widget<QLineEdit>("EditFreq")->font().pixelSize(), 12);
  EXPECT_EQ(h.Widget<QLabel>("StaticText5")->font(), h.view->Client()->font());
  EXPECT_EQ(h.Widget<QLabel>("StaticJamming")->palette().color(QPalette::WindowText),
            QColor(0xE2, 0x18, 0x0D));
}

TEST(WindowWidgets, TheWindowHasItsTitleAndAFixedClientArea) {
  ViewHarness h;
  h.Start();
  EXPECT_TRUE(h.view->isVisible());
  EXPECT_EQ(h.view->windowTitle(), "Tarnline Interface");
  EXPECT_EQ(h.view->Client()->size(), QSize(576, 529));
  EXPECT_EQ(h.view->minimumSize(), h.view->maximumSize());  // not resizable
  EXPECT_EQ(h.view->centralWidget(), h.view->Client());
  // A close and a minimize button, and no maximize button to offer a size it cannot take.
  const Qt::WindowFlags flags = h.view->windowFlags();
  EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
  EXPECT_TRUE(flags.testFlag(Qt::WindowMinimizeButtonHint));
  EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
  ASSERT_NE(h.view->windowHandle(), nullptr);
  EXPECT_FALSE(h.view->windowHandle()->flags().testFlag(Qt::WindowMaximizeButtonHint));
}

// Real Tab presses from the first control, not the focus chain as Qt keeps it: a control that eats
// the key (as a multi-line field does unless told otherwise) stops the walk there.
TEST(WindowWidgets, TabMovesThroughTheControlsInTabIndexOrder) {
  ViewHarness h;
  h.Start();
  h.view->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.view.get()));
  // Everything but the static texts and the timers takes the focus, in the order of TabIndex.
  std::vector<const Control*> focusable;
  for (const Control* c : h.w->Controls()) {
    if (c->Kind() != ControlKind::StaticText && c->Kind() != ControlKind::Timer) {
      focusable.push_back(c);
    }
  }
  std::sort(focusable.begin(), focusable.end(),
            [](const Control* a, const Control* b) { return a->tabIndex < b->tabIndex; });
  std::vector<std::string> expected;
  for (const Control* c : focusable) expected.push_back(c->Name());
  ASSERT_EQ(expected.size(), 15u);
  ASSERT_EQ(expected.front(), "SerialPopup");

  auto* monitor = h.Widget<QPlainTextEdit>("EditField1");
  ASSERT_NE(monitor, nullptr);
  h.Widget<QWidget>("SerialPopup")->setFocus(Qt::OtherFocusReason);
  std::vector<std::string> visited;
  for (std::size_t press = 0; press <= expected.size(); ++press) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr) << "after " << press << " presses";
    visited.push_back(focused->objectName().toStdString());
    if (press < expected.size()) QTest::keyClick(focused, Qt::Key_Tab);
  }
  // Once round, and back to the first control.
  expected.push_back(expected.front());
  EXPECT_EQ(visited, expected);
  EXPECT_EQ(monitor->toPlainText().toStdString(), "");  // the monitor took no tab character
  EXPECT_EQ(h.w->EditField1.Text(), "");
}

}  // namespace
}  // namespace tarn::test

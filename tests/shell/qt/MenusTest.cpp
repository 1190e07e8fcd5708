// The menu bar of the shown window: its items, their shortcuts and what they do.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

#include "shell/qt/ViewHarness.h"

namespace tarn::test {
namespace {

QStringList Titles(const QMenuBar& bar) {
  QStringList titles;
  for (const QAction* a : bar.actions()) titles << a->text();
  return titles;
}

QStringList Items(const QAction& menuTitle) {
  QStringList items;
  for (const QAction* a : menuTitle.menu()->actions())
    items << (a->isSeparator() ? "-" : a->text());
  return items;
}

TEST(Menus, TheBarHoldsFileAndEditAndTheEmptyItemHidden) {
  ViewHarness h;
  h.Start();
  EXPECT_EQ(Titles(*h.view->menuBar()), (QStringList{"&File", "&Edit", ""}));
  EXPECT_EQ(Items(*h.view->MenuAction("FileMenu")), (QStringList{"Quit", "ScanList..."}));
  EXPECT_EQ(Items(*h.view->MenuAction("EditMenu")),
            (QStringList{"Undo", "-", "Cut", "Copy", "Paste", "Clear"}));
  EXPECT_TRUE(h.view->MenuAction("FileMenu")->isVisible());
  EXPECT_FALSE(h.view->MenuAction("UntitledMenu2")->isVisible());
}

TEST(Menus, ShortcutsAreThePlatformsStandardKeys) {
  ViewHarness h;
  h.Start();
  // Ctrl+Q on X11, and also where the platform names no quit key (the offscreen platform).
  EXPECT_EQ(h.view->MenuAction("FileQuit")->shortcut(), QKeySequence("Ctrl+Q"));
  EXPECT_EQ(h.view->MenuAction("FileQuit")->menuRole(), QAction::QuitRole);
  EXPECT_EQ(h.view->MenuAction("EditUndo")->shortcuts(),
            QKeySequence::keyBindings(QKeySequence::Undo));
  EXPECT_EQ(h.view->MenuAction("EditCut")->shortcuts(),
            QKeySequence::keyBindings(QKeySequence::Cut));
  EXPECT_EQ(h.view->MenuAction("EditCopy")->shortcut(), QKeySequence("Ctrl+C"));
  EXPECT_EQ(h.view->MenuAction("EditPaste")->shortcut(), QKeySequence("Ctrl+V"));
  EXPECT_TRUE(h.view->MenuAction("EditClear")->shortcut().isEmpty());
  EXPECT_TRUE(h.view->MenuAction("FileScanList")->shortcut().isEmpty());
}

TEST(Menus, ControlQTriggersQuitFromAnywhereInTheWindow) {
  ViewHarness h;
  h.Start();
  h.view->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.view.get()));
  QSignalSpy quit(h.view->MenuAction("FileQuit"), &QAction::triggered);
  QTest::keyClick(h.Widget<QLineEdit>("EditFreq"), Qt::Key_Q, Qt::ControlModifier);
  EXPECT_EQ(quit.count(), 1);
}

TEST(Menus, ScanListAsksForATextFile) {
  ViewHarness h;
  h.Start();
  h.view->MenuAction("FileScanList")->trigger();
  EXPECT_EQ(h.chooser.filters, (std::vector<std::string>{"TEXT"}));
}

TEST(Menus, CopyCutPasteAndClearActOnTheFocusedFieldAndReachTheModel) {
  ViewHarness h;
  h.Start();
  h.view->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.view.get()));
  auto* freq = h.Widget<QLineEdit>("EditFreq");
  freq->setFocus();
  ASSERT_TRUE(QTest::qWaitFor([&] { return freq->hasFocus(); }));
  QTest::keyClicks(freq, "14250");
  freq->selectAll();
  h.view->MenuAction("EditCopy")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "14250");
  h.view->MenuAction("EditCut")->trigger();
  EXPECT_EQ(h.w->EditFreq.Text(), "");
  h.view->MenuAction("EditPaste")->trigger();
  h.view->MenuAction("EditPaste")->trigger();
  EXPECT_EQ(h.w->EditFreq.Text(), "1425014250");
  freq->setSelection(0, 5);
  h.view->MenuAction("EditClear")->trigger();
  EXPECT_EQ(h.w->EditFreq.Text(), "14250");
  h.view->MenuAction("EditClear")->trigger();  // nothing selected: Clear takes nothing
  EXPECT_EQ(h.w->EditFreq.Text(), "14250");
  h.view->MenuAction("EditUndo")->trigger();
  EXPECT_EQ(h.w->EditFreq.Text(), "1425014250");
  EXPECT_EQ(freq->text().toStdString(), h.w->EditFreq.Text());
}

TEST(Menus, EditItemsWorkInTheMonitorToo) {
  ViewHarness h;
  h.Start();
  h.view->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.view.get()));
  auto* monitor = h.Widget<QPlainTextEdit>("EditField1");
  monitor->setFocus();
  ASSERT_TRUE(QTest::qWaitFor([&] { return monitor->hasFocus(); }));
  QApplication::clipboard()->setText("FE_FE_");
  h.view->MenuAction("EditPaste")->trigger();
  EXPECT_EQ(h.w->EditField1.Text(), "FE_FE_");
  monitor->selectAll();
  h.view->MenuAction("EditClear")->trigger();
  EXPECT_EQ(h.w->EditField1.Text(), "");
}

}  // namespace
}  // namespace tarn::test

// Edit > Undo in the data monitor takes back what the user did there, not the bytes received.
#include <gtest/gtest.h>

#include <QTest>

#include "shell/qt/ViewHarness.h"

TEST(MonitorMirror, UndoTakesBackTheUsersEditAndKeepsTheBytesReceivedSince) {
  tarn::test::ViewHarness h;
  h.Start();
  ASSERT_TRUE(QTest::qWaitForWindowActive(h.view.get()));
  h.Widget<QWidget>("EditField1")->setFocus();
  QTest::keyClicks(QApplication::focusWidget(), "ab");
  h.w->EditField1.SetText("abFE_");  // a read appends, as CheckSerial does
  h.view->MenuAction("EditUndo")->trigger();
  EXPECT_EQ(h.w->EditField1.Text(), "aFE_");
}

#include <gtest/gtest.h>

#include "platform/Controls.h"

namespace tarn {
namespace {

TEST(PopupMenu, CreationValuesRaiseNothingAndEveryLaterAssignmentRaisesChangeOnce) {
  PopupMenu popup("p");
  int changes = 0;
  popup.InitRows("a\rb\rc", 1);
  popup.Change = [&](PopupMenu&) { ++changes; };
  EXPECT_EQ(popup.ListCount(), 3);
  EXPECT_EQ(popup.Text(), "b");
  EXPECT_EQ(changes, 0);
  popup.SetListIndex(1);  // the same row again still raises
  popup.SetListIndex(2);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(popup.Text(), "c");
}

TEST(PopupMenu, IndexOutsideTheRowsIsIgnored) {
  PopupMenu popup("p");
  int changes = 0;
  popup.InitRows("", 0);
  popup.Change = [&](PopupMenu&) { ++changes; };
  EXPECT_EQ(popup.ListIndex(), -1);  // no rows: nothing selected
  popup.SetListIndex(0);
  EXPECT_EQ(popup.ListIndex(), -1);
  EXPECT_EQ(changes, 0);
  popup.AddRow("x");
  EXPECT_EQ(popup.ListIndex(), -1);  // adding rows selects none
  popup.SetListIndex(0);
  popup.SetListIndex(-1);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(popup.Text(), "");
}

TEST(EditField, SelectionReplacesAndInsertsByCharacter) {
  EditField f("f");
  f.InitText("abcdef");
  int changes = 0;
  f.TextChange = [&](EditField&) { ++changes; };
  f.SetSelStart(0);
  f.SetSelLength(2);
  EXPECT_EQ(f.SelText(), "ab");
  f.SetSelText("");
  EXPECT_EQ(f.Text(), "cdef");
  f.SetSelStart(4);
  EXPECT_EQ(f.SelLength(), 0);
  f.SetSelText("XY");
  EXPECT_EQ(f.Text(), "cdefXY");
  EXPECT_EQ(f.SelStart(), 6);
  EXPECT_EQ(changes, 2);
}

TEST(EditField, SelectionIsClampedToTheText) {
  EditField f("f");
  f.InitText("\xC3\xA9t\xC3\xA9");  // three characters, five bytes
  f.SetSelStart(99);
  EXPECT_EQ(f.SelStart(), 3);
  f.SetSelStart(1);
  f.SetSelLength(99);
  EXPECT_EQ(f.SelLength(), 2);
  EXPECT_EQ(f.SelText(), "t\xC3\xA9");
  f.SetSelStart(-4);
  EXPECT_EQ(f.SelStart(), 0);
}

TEST(EditField, SettingTheSameTextRaisesTextChange) {
  EditField f("f");
  f.InitText("2000");
  int changes = 0;
  f.TextChange = [&](EditField&) { ++changes; };
  f.SetText("2000");
  EXPECT_EQ(changes, 1);
}

TEST(EditField, KeyDownDecidesWhetherTheKeyIsKept) {
  EditField f("f");
  EXPECT_FALSE(f.PressKey("a"));
  f.KeyDown = [](EditField&, std::string_view key) { return key == "x"; };
  EXPECT_TRUE(f.PressKey("x"));
  EXPECT_FALSE(f.PressKey("\n"));
}

TEST(PushButton, ADisabledButtonRaisesNothing) {
  PushButton b("b");
  int pushes = 0;
  b.Action = [&](PushButton&) { ++pushes; };
  b.Push();
  b.SetEnabled(false);
  b.Push();
  EXPECT_EQ(pushes, 1);
}

TEST(Control, TellsItsViewOfEveryChange) {
  StaticText t("t");
  int told = 0;
  t.viewChanged = [&] { ++told; };
  t.SetText("x");
  t.SetVisible(false);
  t.SetEnabled(false);
  EXPECT_EQ(told, 3);
}

}  // namespace
}  // namespace tarn

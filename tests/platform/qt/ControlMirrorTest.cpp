// Each kind of control model in its real widget, both ways, with no window logic behind it.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <string>
#include <vector>

#include "platform/qt/ControlMirror.h"

namespace tarn {
namespace {

struct Mirrored {
  QWidget parent;
  std::unique_ptr<ControlMirror> mirror;
  template <class W>
  W* Widget() {
    return qobject_cast<W*>(mirror->Widget());
  }
};

TEST(PopupMirror, ShowsRowsAndSelectionAndNoneForMinusOne) {
  PopupMenu popup("Popup");
  popup.InitRows("A\rB\rC", 1);
  Mirrored m;
  m.mirror = MakeMirror(popup, &m.parent);
  auto* combo = m.Widget<QComboBox>();
  ASSERT_NE(combo, nullptr);
  ASSERT_EQ(combo->count(), 3);
  EXPECT_EQ(combo->itemText(2), "C");
  EXPECT_EQ(combo->currentIndex(), 1);
  popup.SetListIndex(-1);
  EXPECT_EQ(combo->currentIndex(), -1);
  EXPECT_TRUE(combo->currentText().isEmpty());
}

TEST(PopupMirror, RowsAddedByTheLogicShowWithoutASelection) {
  PopupMenu popup("Ports");
  Mirrored m;
  m.mirror = MakeMirror(popup, &m.parent);
  popup.AddRow("ttyUSB0");
  popup.AddRow("ttyUSB1");
  auto* combo = m.Widget<QComboBox>();
  EXPECT_EQ(combo->count(), 2);
  EXPECT_EQ(combo->currentIndex(), -1);  // adding rows selects none, and the combo agrees
}

TEST(PopupMirror, AUsersChoiceRaisesChangeOnceAndALogicChoiceNone) {
  PopupMenu popup("Popup");
  popup.InitRows("A\rB\rC", 0);
  std::vector<i64> changes;
  popup.Change = [&](PopupMenu& p) { changes.push_back(p.ListIndex()); };
  Mirrored m;
  m.mirror = MakeMirror(popup, &m.parent);
  auto* combo = m.Widget<QComboBox>();
  QSignalSpy activated(combo, &QComboBox::activated);

  QTest::keyClick(combo, Qt::Key_Down);  // a user's choice from the keyboard
  EXPECT_EQ(changes, (std::vector<i64>{1}));
  EXPECT_EQ(popup.ListIndex(), 1);

  popup.SetListIndex(2);  // the logic's choice: one Change, from the model itself
  EXPECT_EQ(changes, (std::vector<i64>{1, 2}));
  EXPECT_EQ(combo->currentIndex(), 2);
  EXPECT_EQ(activated.count(), 1);  // only the user's
}

TEST(PopupMirror, ChoosingTheRowShownAgainRaisesChange) {
  PopupMenu popup("SerialPopup");
  popup.InitRows("port0\rport1", 0);
  int changes = 0;
  popup.Change = [&](PopupMenu&) { ++changes; };
  Mirrored m;
  m.mirror = MakeMirror(popup, &m.parent);
  emit m.Widget<QComboBox>()->activated(0);
  EXPECT_EQ(changes, 1);
}

TEST(LineEditMirror, EachTypedCharacterReachesTheModelOnce) {
  EditField field("EditFreq");
  std::vector<std::string> changes;
  std::vector<std::string> keys;
  field.TextChange = [&](EditField& f) { changes.push_back(f.Text()); };
  field.KeyDown = [&](EditField& f, std::string_view key) {
    keys.emplace_back(std::string(key) + "@" + f.Text());
    return false;
  };
  Mirrored m;
  m.mirror = MakeMirror(field, &m.parent);
  QTest::keyClicks(m.Widget<QLineEdit>(), "14");
  EXPECT_EQ(changes, (std::vector<std::string>{"1", "14"}));
  // KeyDown comes before the field takes the key, with the text as it was.
  EXPECT_EQ(keys, (std::vector<std::string>{"1@", "4@1"}));
  EXPECT_EQ(field.Text(), "14");
}

TEST(LineEditMirror, ReturnAndEnterReachKeyDownAsTheLineEnd) {
  EditField field("EditFreq");
  std::vector<std::string> keys;
  field.KeyDown = [&](EditField&, std::string_view key) {
    keys.emplace_back(key);
    return false;
  };
  Mirrored m;
  m.mirror = MakeMirror(field, &m.parent);
  auto* edit = m.Widget<QLineEdit>();
  QSignalSpy returned(edit, &QLineEdit::returnPressed);
  QTest::keyClick(edit, Qt::Key_Return);
  QTest::keyClick(edit, Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(keys, (std::vector<std::string>{std::string(EndOfLine), std::string(EndOfLine)}));
  EXPECT_EQ(returned.count(), 2);  // KeyDown said false: the keys went on to the field
}

TEST(LineEditMirror, AKeyTheHandlerKeepsNeverReachesTheField) {
  EditField field("Hex");
  field.KeyDown = [](EditField&, std::string_view key) { return key == "x"; };
  Mirrored m;
  m.mirror = MakeMirror(field, &m.parent);
  auto* edit = m.Widget<QLineEdit>();
  QTest::keyClicks(edit, "1x2");
  EXPECT_EQ(edit->text(), "12");
  EXPECT_EQ(field.Text(), "12");
}

TEST(LineEditMirror, TheLogicsTextShowsAndDoesNotComeBack) {
  EditField field("OurIDEditFieldHex");
  int changes = 0;
  field.TextChange = [&](EditField&) { ++changes; };
  Mirrored m;
  m.mirror = MakeMirror(field, &m.parent);
  auto* edit = m.Widget<QLineEdit>();
  QSignalSpy edited(edit, &QLineEdit::textEdited);
  field.SetText("e0");
  EXPECT_EQ(edit->text(), "e0");
  EXPECT_EQ(changes, 1);  // the model's own, nothing from the widget
  EXPECT_EQ(edited.count(), 0);
}

TEST(PlainTextMirror, AppendsThroughTheSelectionShowAndScrollToTheEnd) {
  EditField monitor("EditField1");
  monitor.multiline = true;
  Mirrored m;
  m.mirror = MakeMirror(monitor, &m.parent);
  auto* edit = m.Widget<QPlainTextEdit>();
  ASSERT_NE(edit, nullptr);
  edit->resize(200, 60);
  m.parent.show();
  for (int i = 0; i < 40; ++i) {
    monitor.SetSelStart(Utf8Length(monitor.Text()));
    monitor.SetSelText("FE_FE_E0_08_03_FD_\n");
  }
  EXPECT_EQ(edit->toPlainText().toStdString(), monitor.Text());
  QScrollBar* bar = edit->verticalScrollBar();
  EXPECT_GT(bar->maximum(), 0);
  EXPECT_EQ(bar->value(), bar->maximum());

  monitor.SetSelStart(0);  // the cut from the front, as the pump keeps the last characters
  monitor.SetSelLength(Utf8Length(monitor.Text()) - 19);
  monitor.SetSelText("");
  EXPECT_EQ(edit->toPlainText(), "FE_FE_E0_08_03_FD_\n");
}

TEST(PlainTextMirror, UserTypingGoesIntoTheModel) {
  EditField monitor("EditField1");
  monitor.multiline = true;
  monitor.InitText("ab");
  std::vector<std::string> keys;
  monitor.KeyDown = [&](EditField&, std::string_view key) {
    keys.emplace_back(key);
    return false;
  };
  Mirrored m;
  m.mirror = MakeMirror(monitor, &m.parent);
  auto* edit = m.Widget<QPlainTextEdit>();
  edit->moveCursor(QTextCursor::End);
  QTest::keyClicks(edit, "c");
  QTest::keyClick(edit, Qt::Key_Return);
  EXPECT_EQ(monitor.Text(), "abc\n");
  EXPECT_EQ(keys, (std::vector<std::string>{"c", std::string(EndOfLine)}));
}

TEST(CheckBoxMirror, AClickSetsTheModelAndTheModelSetsTheBox) {
  CheckBox check("ShowDataCheck");
  check.caption = "Show Data";
  check.bounds = {10, 313, 95, 20};
  Mirrored m;
  m.mirror = MakeMirror(check, &m.parent);
  auto* box = m.Widget<QCheckBox>();
  EXPECT_EQ(box->text(), "Show Data");
  QTest::mouseClick(box, Qt::LeftButton);
  EXPECT_TRUE(check.Value());
  QSignalSpy clicked(box, &QCheckBox::clicked);
  check.SetValue(false);
  EXPECT_FALSE(box->isChecked());
  EXPECT_EQ(clicked.count(), 0);
}

TEST(ButtonMirror, AClickRaisesActionOnceAndNotWhileDisabled) {
  PushButton button("FindRadiosButton");
  button.caption = "Find All Radios";
  button.bounds = {260, 313, 117, 20};  // a click lands in the middle of the widget
  int actions = 0;
  button.Action = [&](PushButton&) { ++actions; };
  Mirrored m;
  m.mirror = MakeMirror(button, &m.parent);
  auto* push = m.Widget<QPushButton>();
  EXPECT_EQ(push->text(), "Find All Radios");
  QTest::mouseClick(push, Qt::LeftButton);
  EXPECT_EQ(actions, 1);
  button.SetEnabled(false);
  EXPECT_FALSE(push->isEnabled());
  QTest::mouseClick(push, Qt::LeftButton);
  EXPECT_EQ(actions, 1);
}

TEST(LabelMirror, TextVisibilityFontAndColourFollowTheModel) {
  StaticText label("StaticJamming");
  label.bounds = {20, 111, 100, 20};
  label.textSize = 16;
  label.textColor = 0x00E2180D;
  label.InitText("JAMMING <b>CODE</b>");
  label.SetVisible(false);
  Mirrored m;
  m.mirror = MakeMirror(label, &m.parent);
  auto* text = m.Widget<QLabel>();
  EXPECT_EQ(text->objectName(), "StaticJamming");
  EXPECT_EQ(text->geometry(), QRect(20, 111, 100, 20));
  EXPECT_EQ(text->font().pixelSize(), 16);
  EXPECT_EQ(text->palette().color(QPalette::WindowText), QColor(0xE2, 0x18, 0x0D));
  EXPECT_EQ(text->textFormat(), Qt::PlainText);
  EXPECT_TRUE(text->isHidden());
  label.SetVisible(true);
  EXPECT_FALSE(text->isHidden());
  label.SetText("-");
  EXPECT_EQ(text->text(), "-");
}

TEST(MirrorLifetime, AGoneMirrorLeavesTheModelUsable) {
  StaticText label("FreqDisplay");
  {
    Mirrored m;
    m.mirror = MakeMirror(label, &m.parent);
    EXPECT_TRUE(static_cast<bool>(label.viewChanged));
  }
  EXPECT_FALSE(static_cast<bool>(label.viewChanged));
  label.SetText("145500");  // no view to tell, and nothing dangling
  EXPECT_EQ(label.Text(), "145500");
}

}  // namespace
}  // namespace tarn

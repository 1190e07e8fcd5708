// A user at the shown window: choices, keys and clicks in the real widgets reach the window's
// logic, and what the logic does shows in the widgets without coming back as a user action.
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

#include "shell/qt/ViewHarness.h"

namespace tarn::test {
namespace {

constexpr int kTransmitTickMs = 10;  // Timer2
constexpr int kPumpTickMs = 50;      // Timer1

// The frames the window wrote since `from`, as one byte string.
std::string WrittenSince(const MemoryLine& line, std::size_t from) {
  std::string all;
  for (std::size_t i = from; i < line.writes.size(); ++i) all += line.writes[i];
  return all;
}

TEST(WindowActions, ABaudChoiceInTheComboReopensThePortAtThatSpeed) {
  ViewHarness h;
  h.Start();
  const int opensBefore = h.Line().opens;
  auto* baud = h.Widget<QComboBox>("BaudPopup");
  QTest::keyClick(baud, Qt::Key_Down);  // 9600 -> the next row, 14400
  EXPECT_EQ(h.w->BaudPopup.ListIndex(), 9);
  EXPECT_EQ(h.Line().opens, opensBefore + 1);
  EXPECT_TRUE(h.Line().open);
  EXPECT_EQ(h.Line().configured.back().baud, 14400);

  emit baud->activated(12);
  EXPECT_EQ(h.Line().opens, opensBefore + 2);
  EXPECT_EQ(h.Line().configured.back().baud, 38400);
  EXPECT_EQ(baud->currentIndex(), 12);
}

TEST(WindowActions, ASerialPortChoiceOpensThatPort) {
  ViewHarness h(2);
  h.Start();
  emit h.Widget<QComboBox>("SerialPopup")->activated(1);
  EXPECT_FALSE(h.Line(0).open);
  EXPECT_TRUE(h.Line(1).open);
  EXPECT_EQ(h.app.ourSerialPort, 1);
}

TEST(WindowActions, AFrequencyTypedWithReturnGoesOutAfterTheTransmitTick) {
  ViewHarness h;
  h.Start();
  const std::size_t before = h.Line().writes.size();
  const i64 head = h.w->serialBufHead;
  auto* freq = h.Widget<QLineEdit>("EditFreq");
  QTest::keyClicks(freq, "14250");  // kHz, the unit popup's first row
  EXPECT_EQ(h.w->EditFreq.Text(), "14250");
  QTest::keyClick(freq, Qt::Key_Return);
  EXPECT_NE(h.w->serialBufHead, head);  // queued in the transmit ring
  h.clock.AdvanceBy(kTransmitTickMs);
  const std::string frame = WrittenSince(h.Line(), before);
  ASSERT_EQ(frame.size(), 10u);  // FE FE to from 05, four frequency bytes, FD
  EXPECT_EQ(frame.substr(0, 5), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05}));
  EXPECT_EQ(frame.substr(6), Bytes({0x00, 0x25, 0x14, 0xFD}));  // 14.25 MHz, packed decimal
  EXPECT_EQ(freq->text(), "14250");  // the key went on to the field and took nothing away
}

TEST(WindowActions, TheSetButtonSendsWhatTheFieldHolds) {
  ViewHarness h;
  h.Start();
  QTest::keyClicks(h.Widget<QLineEdit>("EditFreq"), "7.1");
  h.w->kHzPopup.SetListIndex(1);  // MHz
  const std::size_t before = h.Line().writes.size();
  QTest::mouseClick(h.Widget<QPushButton>("SetFreq1"), Qt::LeftButton);
  h.clock.AdvanceBy(kTransmitTickMs);
  const std::string frame = WrittenSince(h.Line(), before);
  ASSERT_EQ(frame.size(), 10u);
  EXPECT_EQ(frame.substr(7), Bytes({0x10, 0x07, 0xFD}));  // 7.10 MHz
}

TEST(WindowActions, TypingAnUpdateRateChangesThePoll) {
  ViewHarness h;
  h.Start();
  auto* rate = h.Widget<QLineEdit>("EditUpdateRate");
  rate->selectAll();
  QTest::keyClicks(rate, "500");
  EXPECT_EQ(h.w->EditUpdateRate.Text(), "500");
  EXPECT_EQ(h.w->ReqTimer.Period(), 250);
}

TEST(WindowActions, AnswersFromTheRadioShowOnTheDisplaysOnce) {
  ViewHarness h;
  h.Start();
  auto* freq = h.Widget<QLabel>("FreqDisplay");
  int changes = 0;
  h.view->displaysChanged = [&] { ++changes; };
  // 145.500.000 Hz in five bytes, then mode FM with the wide filter, both to us (E0).
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD, 0xFE,
                             0xFE, 0xE0, 0x08, 0x04, 0x05, 0x01, 0xFD});
  h.clock.AdvanceBy(kPumpTickMs);
  EXPECT_EQ(freq->text(), "145500");
  EXPECT_EQ(h.Widget<QLabel>("ModeDisplay")->text(), "FM");
  EXPECT_EQ(h.view->StatusLine().toStdString(),
            "Freq: 145500  Mode: FM  Filter: " + h.w->FilterDisplay.Text());
  EXPECT_EQ(changes, 3);  // each display once
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD});
  h.clock.AdvanceBy(kPumpTickMs);
  EXPECT_EQ(changes, 3);  // the same answer again changes nothing on screen
}

TEST(WindowActions, ShowDataPutsReceivedBytesInTheMonitorScrolledToTheEnd) {
  ViewHarness h;
  h.Start();
  QTest::mouseClick(h.Widget<QCheckBox>("ShowDataCheck"), Qt::LeftButton);
  ASSERT_TRUE(h.w->ShowDataCheck.Value());
  auto* monitor = h.Widget<QPlainTextEdit>("EditField1");
  // A burst long enough to overflow the monitor: the pump keeps 500 characters before each read.
  for (int read = 0; read < 3; ++read) {
    for (int i = 0; i < 60; ++i) h.Line().incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
    h.clock.AdvanceBy(kPumpTickMs);
  }
  EXPECT_EQ(monitor->toPlainText().toStdString(), h.w->EditField1.Text());
  EXPECT_TRUE(monitor->toPlainText().endsWith("FE_FE_E0_08_FB_FD_"));
  QScrollBar* bar = monitor->verticalScrollBar();
  EXPECT_GT(bar->maximum(), 0);
  EXPECT_EQ(bar->value(), bar->maximum());
}

TEST(WindowActions, AJamCodeShowsTheRedIndicatorForASecond) {
  ViewHarness h;
  h.Start();
  auto* jam = h.Widget<QLabel>("StaticJamming");
  ASSERT_TRUE(jam->isHidden());
  h.Line().incoming = Bytes({0xFC});
  h.clock.AdvanceBy(kPumpTickMs);
  EXPECT_FALSE(jam->isHidden());
  EXPECT_TRUE(jam->isVisible());
  h.clock.AdvanceBy(1000);
  EXPECT_TRUE(jam->isHidden());
}

}  // namespace
}  // namespace tarn::test

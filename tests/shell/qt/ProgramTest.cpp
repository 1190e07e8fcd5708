// SPDX-License-Identifier: GPL-3.0-or-later
// The program: its command line, its window with real widgets started as the program starts it
// (on the virtual clock, with in-memory ports named port0, port1...), and the real program as a
// child process on the offscreen platform the tests run on.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QStatusBar>
#include <QTest>
#include <QWindow>
#include <sstream>
#include <tuple>

#include "platform/qt/QtServices.h"
#include "shell/qt/MainWindow.h"
#include "shell/qt/Options.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

struct View : WindowHarness {
  explicit View(int portCount = 1, bool refuse = false) : WindowHarness(portCount) {
    Line().refuseOpen = refuse;
    w = std::make_unique<IcomWindow>(app,
                                     WindowServices{clock, ports, driver, log, boxes, chooser, {}});
    view = std::make_unique<MainWindow>(*w);
    boxes.SetParent(view.get());
    view->ShowAndStart();
  }
  QWidget* Widget(const char* name) const { return view->Client()->findChild<QWidget*>(name); }
  QtMessages boxes;
  std::unique_ptr<MainWindow> view;  // goes before `w`, which it mirrors
};

// A control as its widget shows it: place, tab index, text size in pixels (-1: the style's own),
// whether hidden, a colour other than black, the text or the rows with the selected one, and where
// Tab goes from it. A timer has no widget and gives its Mode and Period.
std::string Describe(const Control& c, QWidget* w) {
  if (const auto* t = dynamic_cast<const Timer*>(&c)) {
    return c.Name() + " mode " + std::to_string(t->Mode()) + " every " +
           std::to_string(t->Period());
  }
  std::ostringstream s(c.Name(), std::ios::ate);
  const QRect g = w->geometry();
  const QColor colour = w->palette().color(QPalette::WindowText);
  s << ' ' << g.x() << ',' << g.y() << ' ' << g.width() << 'x' << g.height() << " tab "
    << c.tabIndex << " size " << w->font().pixelSize() << (w->isHidden() ? " hidden" : "")
    << (colour == Qt::black ? "" : ' ' + colour.name().toStdString());
  if (const auto* combo = qobject_cast<const QComboBox*>(w)) {
    s << " @" << combo->currentIndex() << ':';
    for (int i = 0; i < combo->count(); ++i) s << ' ' << combo->itemText(i).toStdString();
  }
  if (w->focusPolicy() != Qt::NoFocus) {
    w->setFocus();
    QTest::keyClick(w, Qt::Key_Tab);
    s << " next " << QApplication::focusWidget()->objectName().toStdString();
  }
  const QVariant text = w->property(w->inherits("QPlainTextEdit") ? "plainText" : "text");
  if (text.isValid()) s << " '" << text.toString().toStdString() << "'";
  return s.str();
}

TEST(MainWindow, ShowsItsControlsAndMenusAsStarted) {
  const std::vector<std::string> expected = {
      "SerialPopup 109,14 280x20 tab 0 size 12 @0: port0 next EditField1",
      "EditField1 10,345 527x164 tab 1 size 12 next BaudPopup ''",
      "Timer1 mode 2 every 50",
      "BaudPopup 109,44 95x20 tab 2 size 12 @8: 300 600 1200 1800 2400 3600 4800 7200 9600 1440 "
      "19200 28800 38400 56700 next OurIDEditFieldHex",
      "StaticText1 20,14 70x20 tab 3 size 12 'Serial Port:'",
      "StaticText2 20,44 70x20 tab 4 size 12 'Baud Rate:'",
      "StaticText3 216,44 50x20 tab 5 size 12 'Our ID:'",
      "OurIDEditFieldHex 275,44 52x22 tab 6 size 12 next ShowDataCheck 'e0'",
      "ShowDataCheck 10,313 95x20 tab 7 size 12 next FindRadiosButton 'Show Data'",
      "FindRadiosButton 260,313 117x20 tab 8 size 12 next DebugCheckBox 'Find All Radios'",
      "StaticBuf 242,80 202x20 tab 9 size 12 hidden '-'",
      "DebugCheckBox 109,313 80x20 tab 10 size 12 next EditFreq 'Debug'",
      "StaticJamming 20,111 100x20 tab 11 size 12 hidden #e2180d 'JAMMING CODE'",
      "JammerTimer mode 0 every 1000",
      "FindRadiosTimer mode 0 every 1000",
      "StaticFindRadios 392,312 145x20 tab 12 size -1 '-'",
      "EditFreq 75,141 110x20 tab 13 size 12 next SetFreq1 ''",
      "StaticText4 20,142 43x19 tab 14 size 12 'Freq:'",
      "SetFreq1 191,139 60x22 tab 15 size 12 next kHzPopup 'Set'",
      "kHzPopup 269,141 80x20 tab 16 size 12 @0: kHz MHz next EditRadioIDHex",
      "FreqDisplay 87,166 110x30 tab 17 size 16 '-'",
      "ModeDisplay 89,198 100x20 tab 18 size 12 '-'",
      "FilterDisplay 209,198 100x20 tab 19 size 12 '-'",
      "EditRadioIDHex 269,109 48x22 tab 20 size -1 next PopupFreqBytes '8'",
      "ReqTimer mode 2 every 1000",
      "StaticText5 191,110 66x20 tab 21 size -1 'Radio ID:'",
      "StaticText6 20,176 43x20 tab 22 size -1 'Freq:'",
      "StaticText7 20,197 45x20 tab 23 size -1 'Mode:'",
      "PopupFreqBytes 451,109 64x20 tab 24 size -1 @0: 4 5 next PopupMode",
      "StaticText8 389,110 45x20 tab 25 size -1 'Bytes:'",
      "PopupMode 359,141 80x20 tab 26 size -1 @0: LSB USB AM CW RTTY FM FM-WIDE CW-REVERSE "
      "RTTY-REVERSE "
      "SYNC-AM SSB next PopupFilter",
      "PopupFilter 451,141 105x20 tab 27 size -1 @0: Wide Medium Narrow next EditUpdateRate",
      "Timer2 mode 2 every 10",
      "StaticText9 324,110 38x20 tab 28 size -1 'Hex'",
      "EditUpdateRate 456,171 80x22 tab 29 size -1 next SerialPopup '2000'",
      "StaticText10 359,172 85x20 tab 30 size -1 'Update rate:'",
  };
  View v;
  ASSERT_TRUE(QTest::qWaitForWindowActive(v.view.get()));
  std::vector<std::string> shown;
  for (const Control* c : v.w->Controls())
    shown.push_back(Describe(*c, v.Widget(c->Name().c_str())));
  EXPECT_EQ(shown, expected);
  EXPECT_EQ(v.view->windowTitle(), "Tarnline Interface");
  EXPECT_EQ(v.view->Client()->size(), QSize(576, 529));
  EXPECT_FALSE(v.view->windowHandle()->flags().testFlag(Qt::WindowMaximizeButtonHint));
  // The menus, each item with its first key (the separator has neither); ScanList asks for a
  // text file.
  QStringList items;
  for (const QAction* top : v.view->menuBar()->actions()) {
    items << top->text() + (top->isVisible() ? ":" : " hidden:");
    for (const QAction* a : top->menu()->actions())
      items << a->text() + " " + a->shortcut().toString();
  }
  EXPECT_EQ(items,
            (QStringList{"&File:", "Quit Ctrl+Q", "ScanList... ", "&Edit:", "Undo Ctrl+Z", " ",
                         "Cut Ctrl+X", "Copy Ctrl+C", "Paste Ctrl+V", "Clear ", " hidden:"}));
  v.view->MenuAction("FileScanList")->trigger();
  EXPECT_EQ(v.chooser.filters, (std::vector<std::string>{"TEXT"}));
}

// With a good port, with none, and with one that will not open: the speeds the port was set to, in
// order (the open event at BaudPopup's creation row 0, then init's SerialPopup row, then its
// BaudPopup row 8), each failure told with one box on screen for them, and the poll running.
TEST(StartUp, OpensInItsOrderAndPollsWhateverThePortDoes) {
  const std::tuple<int, bool, std::vector<int>, std::size_t> cases[] = {
      {1, false, {300, 300, 9600}, 0}, {0, false, {}, 0}, {1, true, {}, 3}};
  for (const auto& [ports, refuse, bauds, failures] : cases) {
    View v(ports, refuse);
    std::vector<int> configured;
    for (const LineSettings& s : v.Line().configured) configured.push_back(s.baud);
    EXPECT_EQ(configured, bauds);
    EXPECT_EQ(v.boxes.Told(), std::vector<std::string>(failures, "Failure to open serial  port!!"));
    EXPECT_EQ(v.boxes.OpenBoxes().size(), failures > 0 ? 1u : 0u);
    v.clock.AdvanceBy(2500);  // two ticks of the poll
    EXPECT_EQ(v.log.Count("send packet"), 2);
  }
}

// A user's keys, choices and clicks reach the models and raise their events, and what the logic
// does in turn shows in the widgets (the screen reader's test also clicks and toggles).
TEST(MainWindow, UserInputReachesTheModelsAndRaisesTheirEvents) {
  View v;
  QTest::keyClicks(v.Widget("EditFreq"), "14250\r");  // the line end sends it, in kHz
  v.clock.AdvanceBy(10);
  EXPECT_EQ(v.Line().AllWritten(),
            Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x05, 0x49, 0x00, 0x25, 0x14, 0xFD}));
  QTest::keyClick(v.Widget("BaudPopup"), Qt::Key_Down);
  EXPECT_EQ(v.Line().configured.back().baud, 14400);
  auto* find = v.Widget("FindRadiosButton");
  QTest::mouseClick(find, Qt::LeftButton);
  EXPECT_EQ(v.w->FindRadiosTimer.Mode(), 2);
  EXPECT_FALSE(find->isEnabled());
  // A lost port stays in the status bar until it is chosen again, on the row shown.
  v.Line().lost = true;
  v.clock.AdvanceBy(50);
  EXPECT_TRUE(v.view->statusBar()->isVisible());
  v.Line().lost = false;
  auto* ports = qobject_cast<QComboBox*>(v.Widget("SerialPopup"));
  emit ports->activated(0);
  EXPECT_FALSE(v.view->statusBar()->isVisible());
  v.ports.Ports().push_back({"port1", "/mem/1"});  // a port that came later shows as the list opens
  ports->showPopup();
  ports->hidePopup();
  EXPECT_EQ(ports->count(), 2);
}

// Edit > Undo in the monitor takes back what the user typed there, not the bytes received since.
TEST(MainWindow, UndoInTheMonitorTakesBackTheUsersEdit) {
  View v;
  ASSERT_TRUE(QTest::qWaitForWindowActive(v.view.get()));
  v.Widget("EditField1")->setFocus();
  QTest::keyClicks(v.Widget("EditField1"), "ab");
  v.w->EditField1.SetText("abFE_");  // a read appends, as CheckSerial does
  v.view->MenuAction("EditUndo")->trigger();
  EXPECT_EQ(v.w->EditField1.Text(), "aFE_");
}

constexpr int kPatienceMs = 20000;  // a failure bound only

QString Tarnline() {
  return QCoreApplication::applicationDirPath() + "/../src/shell/qt/tarnline";
}

// Both forms of a value, "--port=PATH" and "--status-after 0", are used by the program in the
// screen reader's test.
TEST(Options, BadCommandLinesAreRefusedWithStatusTwo) {
  const std::pair<std::vector<std::string>, std::string> refused[] = {
      {{"--port", "--demo"}, "--port needs a value"},
      {{"--port="}, "--port needs a value"},
      {{"--screenshot"}, "--screenshot needs a value"},
      {{"/dev/ttyUSB0"}, "unknown option '/dev/ttyUSB0'"},
      {{"--quit-after", "86400001"}, "--quit-after needs milliseconds"},
      {{"--status-after=-5"}, "--status-after needs milliseconds"},
      {{"--status-after", "5s"}, "--status-after needs milliseconds"},
      {{"--print-changes=yes"}, "--print-changes takes no value"},
      {{"--baud", "56700"}, "--baud cannot take '56700'"},  // that row runs at 57600
      {{"--radio-id", "100"}, "--radio-id cannot take"},
      {{"--bytes", "6"}, "--bytes cannot take"},
  };
  for (const auto& [args, error] : refused)
    EXPECT_EQ(ParseOptions(args).error.substr(0, error.size()), error);
  // The program says so and ends with status 2, also for a capture file it cannot make.
  for (const auto& [args, said] :
       {std::pair{QStringList{"--port", "--demo"}, "--port needs a value"},
        {{"--capture", "/nonexistent/bus.pcapng"}, "cannot write the capture"}}) {
    QProcess program;
    program.start(Tarnline(), args);
    ASSERT_TRUE(program.waitForFinished(kPatienceMs));
    EXPECT_EQ(program.exitCode(), 2);
    EXPECT_TRUE(program.readAllStandardError().contains(said));
  }
}

// The choices of the command line: the Baud Rate row of a speed, the addresses as given, the row
// of a frequency length.
TEST(Options, StartChoicesNameTheirRows) {
  const std::tuple<std::vector<std::string>, int, std::string, std::string, int> cases[] = {
      {{"--baud=14400", "--radio-id", "94", "--our-id", "E0"}, 9, "94", "E0", -1},
      {{"--baud", "57600", "--radio-id=8", "--bytes", "5"}, 13, "8", "", 1},
  };
  for (const auto& [args, baud, radio, our, bytes] : cases) {
    const ParsedOptions parsed = ParseOptions(args);
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(std::tie(parsed.options.baudRow, parsed.options.radioId, parsed.options.ourId,
                       parsed.options.bytesRow),
              std::tie(baud, radio, our, bytes));
  }
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// tarnline: the program. Start-up order: the command line, the file type, the App object, the
// services, the window's model (its controls and menu model), the Qt window with its menu bar,
// then the window's open events and init.
#include <QApplication>
#include <QTimer>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics/CapturingSerial.h"
#include "link/IcomWindow.h"
#include "platform/GensioSerial.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtPorts.h"
#include "platform/qt/QtServices.h"
#include "shell/qt/MainWindow.h"
#include "shell/qt/Options.h"
#include "shell/qt/QuitOnSignals.h"
#include "simradio/SimRadio.h"

namespace tarn {
namespace {

AppVersion BuildVersion() {
  AppVersion v;
  v.MajorVersion = TARNLINE_VERSION_MAJOR;
  v.MinorVersion = TARNLINE_VERSION_MINOR;
  v.BugVersion = TARNLINE_VERSION_PATCH;
  v.ShortVersion = TARNLINE_VERSION;
  v.LongVersion = std::string("Tarnline ") + TARNLINE_VERSION;
  return v;
}

// Members go in reverse order: the view before the model it mirrors, the model (and its timers)
// before the clock, the demo radio after the window has closed its end of the line.
struct Program {
  Program(const FileType& textType, SerialDriver& lines)
      : files({{textType.MacType, QStringLiteral("Text files (*.txt *.TXT)")}}), serial(lines) {}

  // What the window opens its ports with.
  SerialDriver& Lines() { return capturing ? *capturing : serial; }

  QtClock clock;
  QtLog log;
  QtMessages messages;
  QtFileChooser files;
  SerialDriver& serial;
  std::unique_ptr<BusCapture> capture;
  std::unique_ptr<CapturingDriver> capturing;  // `serial`, seen by `capture`
  GrowingPortCatalog ports{MachinePorts};
  App app;
  std::unique_ptr<sim::PtyRadio> demoRadio;
  std::unique_ptr<IcomWindow> window;
  std::unique_ptr<MainWindow> view;
};

// One radio at 08 on a pseudo-terminal, served from a thread of its own.
std::unique_ptr<sim::PtyRadio> StartDemoRadio() {
  std::string why;
  std::unique_ptr<sim::PtyRadio> radio = sim::PtyRadio::OpenPty(sim::BusOptions{}, why);
  if (!radio) {
    std::cerr << "tarnline: cannot start the simulated radio: " << why << "\n";
    return nullptr;
  }
  radio->WithBus([](sim::SimBus& bus) { bus.AddRadio(sim::RadioState{}); });
  radio->StartThread();
  return radio;
}

// Asks the radio of the Radio ID field once, through the window's own requests, so the displays
// fill without waiting for the first two ticks of the poll (one and two seconds).
void AskOnce(IcomWindow& w) {
  const i64 radio = w.FromHex(w.EditRadioIDHex.Text());
  w.ReqFreq(radio);
  w.ReqMode(radio);
}

// The controls the command line chose, set as a user sets them, so their events follow.
void ApplyStartChoices(const Options& o, IcomWindow& w) {
  if (!o.ourId.empty()) w.OurIDEditFieldHex.SetText(o.ourId);
  if (!o.radioId.empty()) w.EditRadioIDHex.SetText(o.radioId);
  if (o.bytesRow >= 0) w.PopupFreqBytes.SetListIndex(o.bytesRow);
  if (o.baudRow >= 0) w.BaudPopup.SetListIndex(o.baudRow);
}

void PrintStatus(const MainWindow& view) {
  std::cout << view.StatusLine().toStdString() << std::endl;
}

// Precise timers: coarse ones may fire 5% early or late, which could put the quit of
// "--status-after 2500 --quit-after 2600" before the status line it is meant to follow.
void ScheduleScripted(const Options& o, MainWindow& view) {
  if (o.printChanges) view.displaysChanged = [&view] { PrintStatus(view); };
  if (o.statusAfterMs >= 0)
    QTimer::singleShot(o.statusAfterMs, Qt::PreciseTimer, &view, [&view] { PrintStatus(view); });
  if (!o.screenshot.empty()) {
    const int at = o.statusAfterMs >= 0 ? o.statusAfterMs : kDefaultScreenshotAfterMs;
    QTimer::singleShot(at, Qt::PreciseTimer, &view,
                       [&view, path = QString::fromStdString(o.screenshot)] {
                         if (!view.grab().save(path, "PNG")) {
                           std::cerr << "tarnline: cannot save " << path.toStdString() << "\n";
                         }
                       });
  }
  if (o.quitAfterMs >= 0) {
    QTimer::singleShot(o.quitAfterMs, Qt::PreciseTimer, &view,
                       [&view] { view.MenuAction("FileQuit")->trigger(); });
  }
}

// A capture that fails later is told in the status line and the log, and the program goes on.
void AttachCapture(Program& p, std::unique_ptr<BusCapture> capture, const std::string& path) {
  if (!capture) return;
  p.capture = std::move(capture);
  p.capturing = std::make_unique<CapturingDriver>(p.serial, *p.capture);
  p.capture->failed = [&p, path](const std::string& why) {
    const std::string text =
        "Capture to " + (path == "-" ? "standard output" : path) + " stopped: " + why;
    p.log.DebugLog(text);
    p.messages.ShowStatus(text);
  };
}

int Run(const Options& o, SerialDriver& lines, std::unique_ptr<BusCapture> capture) {
  const FileType textType;
  Program p(textType, lines);
  AttachCapture(p, std::move(capture), o.capture);
  p.app.version = BuildVersion();
  QCoreApplication::setApplicationVersion(QString::fromStdString(p.app.version.ShortVersion));
  std::vector<std::string> given = o.ports;
  if (o.demo) {
    p.demoRadio = StartDemoRadio();
    if (!p.demoRadio) return 1;
    given.insert(given.begin(), p.demoRadio->SlavePath());
  }
  p.ports.Ports() = MergePorts(given, MachinePorts());
  // An empty work folder is the current folder: DEBUG.TXT lands where the program was started.
  p.window = std::make_unique<IcomWindow>(
      p.app, WindowServices{p.clock, p.ports, p.Lines(), p.log, p.messages, p.files, ""});
  p.view = std::make_unique<MainWindow>(*p.window);
  p.messages.SetParent(p.view.get());
  p.files.SetParent(p.view.get());
  p.view->ShowAndStart();
  ApplyStartChoices(o, *p.window);
  if (o.demo) AskOnce(*p.window);
  ScheduleScripted(o, *p.view);
  QuitOnSignals(*p.view->MenuAction("FileQuit"));
  return QApplication::exec();
}

}  // namespace
}  // namespace tarn

int main(int argc, char** argv) {
  const tarn::ParsedOptions parsed =
      tarn::ParseOptions(std::vector<std::string>(argv + 1, argv + argc));
  if (!parsed.error.empty()) {
    std::cerr << "tarnline: " << parsed.error << "\nTry 'tarnline --help'.\n";
    return 2;
  }
  // Both answer before Qt starts, so they work without a display (help2man reads them at build).
  if (parsed.options.help) {
    std::cout << tarn::Usage();
    return 0;
  }
  if (parsed.options.version) {
    std::cout << "tarnline " << TARNLINE_VERSION << "\n";
    return 0;
  }
  // Refused like a bad command line, before any window opens.
  std::unique_ptr<tarn::BusCapture> capture;
  if (const std::string& path = parsed.options.capture; !path.empty()) {
    std::string why;
    capture = tarn::BusCapture::Create(path, std::string("Tarnline ") + TARNLINE_VERSION,
                                       tarn::BusCapture::WallClock, why);
    if (!capture) {
      std::cerr << "tarnline: cannot write the capture " << path << ": " << why << "\n";
      return 2;
    }
  }
  // Before Qt starts threads: every thread made later inherits the blocked wake signal of gensio.
  tarn::LineDriver lines;
  // Qt sees no arguments: ours are parsed already, and Qt's own settings come from the
  // environment, so a port path can never be taken for a Qt option.
  int qtArgc = 1;
  QApplication qtApp(qtArgc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("Tarnline"));
  // The last catch: an exception out of start-up is said once, and the program ends with an error
  // status instead of an abort.
  try {
    return tarn::Run(parsed.options, lines, std::move(capture));
  } catch (const std::exception& e) {
    std::cerr << "tarnline: unexpected error: " << e.what() << "\n";
  } catch (...) {
    std::cerr << "tarnline: unexpected error\n";
  }
  return 1;
}

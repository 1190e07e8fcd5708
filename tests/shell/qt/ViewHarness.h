// The program's window, real widgets and all, on the virtual clock with in-memory ports: what
// tarnline builds, with the time and the serial lines under the test's hand.
#pragma once

#include <QWidget>
#include <memory>

#include "link/IcomWindow.h"
#include "platform/ManualClock.h"
#include "platform/qt/QtServices.h"
#include "shell/qt/MainWindow.h"
#include "support/MemorySerial.h"
#include "support/WindowHarness.h"

namespace tarn::test {

struct ViewHarness {
  // Ports named "port0", "port1"... with paths "/mem/0", "/mem/1"...
  explicit ViewHarness(int portCount = 1);

  // Shows the window and starts it as the program does.
  void Start();
  MemoryLine& Line(int port = 0) { return driver.Line("/mem/" + std::to_string(port)); }

  template <class W>
  W* Widget(const char* name) const {
    return view->Client()->findChild<W*>(QString::fromLatin1(name));
  }

  ManualClock clock;
  FixedPortCatalog ports;
  MemorySerialDriver driver;
  RecordingLog log;
  QtMessages messages;
  ScriptedChooser chooser;
  App app;
  std::unique_ptr<IcomWindow> w;
  std::unique_ptr<MainWindow> view;  // goes first: it mirrors `w`
};

}  // namespace tarn::test

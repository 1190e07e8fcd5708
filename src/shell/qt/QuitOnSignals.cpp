// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/qt/QuitOnSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QAction>
#include <QSocketNotifier>
#include <csignal>

namespace tarn {

namespace {

// The handler may only write to a pipe; the event loop reads the other end.
int gSignalPipe[2] = {-1, -1};

void OnSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = write(gSignalPipe[1], &byte, 1);
}

}  // namespace

bool QuitOnSignals(QAction& quit) {
  if (pipe2(gSignalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  auto* notifier = new QSocketNotifier(gSignalPipe[0], QSocketNotifier::Read, &quit);
  QObject::connect(notifier, &QSocketNotifier::activated, &quit, [&quit] {
    char byte = 0;
    while (read(gSignalPipe[0], &byte, 1) > 0) {
    }
    quit.trigger();
  });
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  return sigaction(SIGINT, &action, nullptr) == 0 && sigaction(SIGTERM, &action, nullptr) == 0;
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// 1,000 choices in Serial Port and Baud Rate on the program's own serial backend: a port that
// opens, one that does not exist, one that vanished before it was chosen, and one that vanishes
// while open, each reopened at other speeds. Prints the open descriptors and the resident memory
// after the first ten choices and after the last: reopening must leak neither.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/PosixSerial.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Counts what it is told and keeps none of it: a recording sink would grow with every message.
struct Counting : LogSink, MessageSink {
  void DebugLog(std::string_view) override {}
  void MsgBox(std::string_view) override { ++boxes; }
  void ShowStatus(std::string_view text) override { losses += !text.empty(); }
  int boxes = 0, losses = 0;
};

double OpenDescriptors() {
  const std::filesystem::directory_iterator fds("/proc/self/fd");
  return static_cast<double>(std::distance(begin(fds), end(fds)));
}

double ResidentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string key; status >> key;) {
    if (key == "VmRSS:") {
      double kib = 0;
      status >> kib;
      return kib;
    }
    status.ignore(1 << 16, '\n');
  }
  return 0;
}

// The far end of a new pseudo-terminal, and its path.
int OpenPty(std::string& path) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return -1;
  path = ptsname(master);
  return master;
}

constexpr int kChoices = 1000;

void BM_PortChoices(benchmark::State& state) {
  std::string path;
  const int kept = OpenPty(path);
  WindowHarness h(0);
  h.ports.Ports().push_back({"kept", path});
  h.ports.Ports().push_back({"missing", "/dev/tarnline-no-such-port"});
  ::close(OpenPty(path));  // gone before it is ever chosen
  h.ports.Ports().push_back({"vanished", path});
  h.ports.Ports().push_back({"vanishing", ""});
  PosixSerialDriver driver;
  Counting told;
  h.w = std::make_unique<IcomWindow>(
      h.app, WindowServices{h.clock, h.ports, driver, told, told, h.chooser, {}});
  h.w->Open();
  h.w->init();
  for (auto _ : state) {
    // Ten choices a round, so that the tenth and the last leave the same port open.
    for (int i = 0; i < kChoices; ++i) {
      const int port = (i % 10 / 2) % 4;
      int vanishing = -1;
      if (i % 2 == 1) {
        h.w->BaudPopup.SetListIndex(i % 14);  // the port in use, reopened at another speed
      } else {
        if (port == 3) vanishing = OpenPty(h.ports.Ports()[3].path);
        h.w->SerialPopup.SetListIndex(port);
      }
      h.clock.AdvanceBy(100);
      if (vanishing >= 0) ::close(vanishing);  // the cable is pulled: the pump finds the loss
      h.clock.AdvanceBy(100);
      if (i == 9) {
        state.counters["fds_after_10"] = OpenDescriptors();
        state.counters["rss_KiB_after_10"] = ResidentKiB();
      }
    }
  }
  state.counters["fds_at_end"] = OpenDescriptors();
  state.counters["rss_KiB_at_end"] = ResidentKiB();
  state.counters["failed_opens"] = told.boxes;
  state.counters["losses_found"] = told.losses;
  h.w.reset();
  ::close(kept);
}
BENCHMARK(BM_PortChoices)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace tarn::test

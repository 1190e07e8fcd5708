// SPDX-License-Identifier: GPL-3.0-or-later
// Scan list playback over a real pseudo-terminal against the simulated radio: lines per second
// with a radio that answers at once, and the share of a core the wait takes with a radio that
// answers after 50 ms.
#include <benchmark/benchmark.h>
#include <time.h>

#include <chrono>

#include "support/PtyHarness.h"
#include "support/TempFolder.h"

namespace tarn::test {
namespace {

double ThreadCpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void PlayScanList(benchmark::State& state, int replyDelayMs, int lines) {
  TempFolder dir;
  std::string list;
  for (int i = 0; i < lines; ++i) list += std::to_string(144.0 + i * 0.0125) + "\n";
  dir.Write("list.txt", list);
  sim::BusOptions options;
  options.replyDelayMs = replyDelayMs;
  PtyHarness h(options);
  h.Start();
  h.chooser.next = dir.File("list.txt");
  double cpu = 0, wall = 0;
  for (auto _ : state) {
    const double before = ThreadCpuSeconds();
    const auto started = std::chrono::steady_clock::now();
    h.w->FileScanList_Action();
    wall += std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    cpu += ThreadCpuSeconds() - before;
  }
  const double total = static_cast<double>(state.iterations()) * lines;
  state.counters["lines/s"] = benchmark::Counter(total, benchmark::Counter::kIsRate);
  state.counters["cpu_us_per_line"] = cpu / total * 1e6;
  state.counters["cpu_share_of_core"] = cpu / wall;
  state.counters["refused"] = static_cast<double>(h.w->RefusedFrames());
}

void BM_ScanListInstantRadio(benchmark::State& state) {
  PlayScanList(state, 0, 500);
}
BENCHMARK(BM_ScanListInstantRadio)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The program's own thread only: the simulated radio's thread is not the program.
void BM_ScanListRadioAnswersAfter50ms(benchmark::State& state) {
  PlayScanList(state, 50, 20);
}
BENCHMARK(BM_ScanListRadioAnswersAfter50ms)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(2);

}  // namespace
}  // namespace tarn::test

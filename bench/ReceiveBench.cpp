// SPDX-License-Identifier: GPL-3.0-or-later
// Throughput of the receive path: ParseByte alone, and CheckSerial with the monitor and the debug
// file on.
#include <benchmark/benchmark.h>

#include <random>

#include "AllocationCounter.h"
#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// What a busy bus carries: our own frames echoed, replies for us, frames between other devices,
// answer codes and now and then a jam byte.
std::string MixedStream(std::size_t size) {
  const std::string pieces[] = {
      Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}),  // our request, echoed
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD}),  // frequency reply
      Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x04, 0xFD}),
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x04, 0x05, 0x01, 0xFD}),                    // mode reply
      Bytes({0xFE, 0xFE, 0x94, 0x58, 0x03, 0x00, 0x10, 0x25, 0x14, 0x00, 0xFD}),  // other devices
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD}),                                // acknowledgement
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFA, 0xFD}),
      Bytes({0xFC}),  // jam
  };
  const int weights[] = {30, 30, 30, 30, 20, 10, 2, 1};
  std::mt19937 rng(7);
  std::discrete_distribution<int> pick(std::begin(weights), std::end(weights));
  std::string s;
  while (s.size() < size) s += pieces[pick(rng)];
  return s;
}

void BM_ParseByteMixedStream(benchmark::State& state) {
  WindowHarness h;
  h.Start();
  const std::string stream = MixedStream(1 << 20);
  const std::uint64_t allocationsBefore = AllocationCount();
  for (auto _ : state) {
    for (char c : stream) h.w->ParseByte(static_cast<unsigned char>(c));
    benchmark::DoNotOptimize(h.w->parseState);
  }
  const auto bytes = static_cast<double>(state.iterations() * stream.size());
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
  // Only a reply for us allocates (the display's new text), never a byte on its own.
  state.counters["allocs_per_byte"] =
      static_cast<double>(AllocationCount() - allocationsBefore) / bytes;
}
BENCHMARK(BM_ParseByteMixedStream)->Unit(benchmark::kMillisecond);

// One read as the pump does it three times every 50 ms, with everything switched on.
void BM_CheckSerial64ByteRead(benchmark::State& state) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->ShowDataCheck.SetValue(true);
  h.w->DebugCheckBox.SetValue(state.range(0) != 0);
  const std::string read = MixedStream(64).substr(0, 64);
  const std::uint64_t allocationsBefore = AllocationCount();
  for (auto _ : state) {
    h.Line().incoming = read;
    h.w->CheckSerial();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * read.size()));
  state.counters["allocs_per_read"] = static_cast<double>(AllocationCount() - allocationsBefore) /
                                      static_cast<double>(state.iterations());
  state.SetLabel(state.range(0) ? "monitor and DEBUG.TXT" : "monitor only");
}
BENCHMARK(BM_CheckSerial64ByteRead)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tarn::test

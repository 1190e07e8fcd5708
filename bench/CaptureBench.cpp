// SPDX-License-Identifier: GPL-3.0-or-later
// Throughput of the bus capture, in bytes of captured traffic per second: frames and noise read in
// chunks of the given size, framed and written to /dev/null, one write per read as in the program.
#include <benchmark/benchmark.h>
#include <fcntl.h>

#include "diagnostics/BusCapture.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

void BM_CaptureReads(benchmark::State& state) {
  const std::string cycle =
      Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}) +                                // echo
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD}) +  // reply
      Bytes({0x13, 0x37, 0xFC}) +                                                  // noise, jam
      Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x04, 0x05, 0x01, 0xFD});
  std::string stream;
  while (stream.size() < (1 << 20)) stream += cycle;
  const auto chunk = static_cast<std::size_t>(state.range(0));
  BusCapture capture(::open("/dev/null", O_WRONLY), true, "bench", [] { return 0; });
  for (auto _ : state) {
    for (std::size_t at = 0; at < stream.size(); at += chunk)
      capture.Read(std::string_view(stream).substr(at, chunk));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}
BENCHMARK(BM_CaptureReads)->Arg(11)->Arg(64)->Arg(4096)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarn::test

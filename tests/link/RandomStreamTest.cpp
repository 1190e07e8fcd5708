#include <gtest/gtest.h>

#include <random>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Any byte stream is legal input. Under the sanitizer build an access outside parseMsg would stop
// the run; here the invariants are checked after every byte.
TEST(FrameReceiver, RandomStreamsKeepEveryInvariant) {
  std::mt19937 rng(20261123);
  WindowHarness h;
  h.Start();
  for (int run = 0; run < 200; ++run) {
    // Streams rich in protocol bytes, so that frames and long data runs both happen.
    std::uniform_int_distribution<int> length(0, run % 10 == 0 ? 20000 : 600);
    std::uniform_int_distribution<int> pick(0, 9);
    std::uniform_int_distribution<int> any(0, 255);
    const int n = length(rng);
    for (int i = 0; i < n; ++i) {
      const int kind = pick(rng);
      const int byte = kind < 2 ? 0xFE : kind == 2 ? 0xFD : kind == 3 ? 0xE0 : any(rng);
      h.w->ParseByte(byte);
      ASSERT_GE(h.w->parseState, 0);
      ASSERT_LE(h.w->parseState, 5);
      ASSERT_GE(h.w->parseMsgLength, 0);
      ASSERT_LE(h.w->parseMsgLength, 257);
    }
  }
  h.clock.AdvanceBy(2000);
  EXPECT_FALSE(h.w->StaticJamming.Visible());
}

}  // namespace
}  // namespace tarn::test

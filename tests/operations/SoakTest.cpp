// An hour of polling on the virtual clock against the simulated radio, whose frequency and mode
// change between polls, with noise between frames and jam bytes cut into replies at random. Every
// reply that arrives intact must reach the displays, in order, and nothing else may.
//
// A longer run: TARNLINE_SOAK_MINUTES=600 tarnline_tests --gtest_filter='Soak.*'
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <deque>
#include <random>

#include "support/SimLine.h"

namespace tarn::test {
namespace {

i64 SoakMinutes() {
  const char* env = std::getenv("TARNLINE_SOAK_MINUTES");
  return env ? std::max<i64>(2, std::atoll(env)) : 60;
}

struct ReplyOnLine {
  std::size_t start, end;  // the reply frame: its first FE and its FD
};

// Finds our radio's reply in a delivered chunk by the protocol's own layout.
bool FindReply(const std::string& chunk, ReplyOnLine& reply) {
  const std::size_t start = chunk.find(Bytes({0xFE, 0xFE, 0xE0, 0x08}));
  if (start == std::string::npos) return false;
  const std::size_t end = chunk.find('\xFD', start);
  if (end == std::string::npos) return false;
  reply = {start, end};
  return true;
}

std::string KHzText(const std::string& data) {
  double hz = 0, scale = 1;
  for (unsigned char b : data) hz += ((b >> 4) * 10 + (b & 15)) * scale, scale *= 100;
  return Str(hz / 1000.0);
}

const char* kModes[] = {"LSB", "USB",     "AM",         "CW",          "RTTY",
                        "FM",  "FM-WIDE", "CW-REVERSE", "RTTY-REVERSE"};

// What the displays must show next, checked as they change, so that the check itself keeps no
// history and the memory measured is the program's.
struct DisplayCheck {
  void Expect(std::string text) {
    if (text != last) pending.push_back(text), last = std::move(text);
  }
  void Shown(const std::string& text) {
    if (pending.empty() || pending.front() != text) {
      ++wrong;
    } else {
      pending.pop_front();
    }
    ++changes;
  }
  std::deque<std::string> pending;
  std::string last = "-";
  i64 wrong = 0, changes = 0;
};

TEST(Soak, EveryIntactReplyReachesTheDisplaysAndMemoryStaysFlat) {
  WindowHarness h;
  h.Start();
  SimLine line(h, {});
  sim::RadioState& radio = line.bus.AddRadio({});
  std::mt19937 rng(42);
  DisplayCheck freq, mode;
  h.w->FreqDisplay.viewChanged = [&] { freq.Shown(h.w->FreqDisplay.Text()); };
  h.w->ModeDisplay.viewChanged = [&] { mode.Shown(h.w->ModeDisplay.Text()); };
  i64 jammed = 0, intact = 0;

  const auto deliver = [&](std::string chunk) {
    ReplyOnLine reply{};
    const bool hasReply = FindReply(chunk, reply);
    bool lost = false;
    if (rng() % 8 == 0) {  // a jam byte somewhere in the chunk
      const std::size_t at = rng() % (chunk.size() + 1);
      lost = hasReply && at > reply.start && at <= reply.end;
      chunk.insert(at, 1, '\xFC');
      if (at <= reply.start) ++reply.start, ++reply.end;
    }
    if (rng() % 4 == 0) {  // noise before the chunk: never a protocol byte
      std::string noise(rng() % 12, '\0');
      for (char& c : noise) c = static_cast<char>(rng() % 0xFA);
      chunk.insert(0, noise);
      reply.start += noise.size();
      reply.end += noise.size();
    }
    if (hasReply) {
      (lost ? jammed : intact) += 1;
      const std::string frame = chunk.substr(reply.start, reply.end - reply.start + 1);
      if (!lost && frame[4] == 0x03) freq.Expect(KHzText(frame.substr(5, frame.size() - 6)));
      if (!lost && frame[4] == 0x04) mode.Expect(kModes[static_cast<unsigned char>(frame[5])]);
    }
    return chunk;
  };

  std::size_t heapAfterFirstMinute = 0;
  const i64 steps = SoakMinutes() * 60'000 / 10;
  for (i64 step = 0; step < steps; ++step) {
    radio.frequencyHz = 144'000'000 + static_cast<std::uint64_t>(step) * 10;  // moves between polls
    radio.mode = static_cast<std::uint8_t>((step / 700) % 9);
    line.Run(10, deliver);
    // The test's own records of the line and the log: cleared so that only the program remains.
    line.bus.ClearFrames();
    h.Line().writes.clear();
    h.log.lines.clear();
    if (step == 6000) heapAfterFirstMinute = mallinfo2().uordblks;
  }
  const std::size_t heapAtEnd = mallinfo2().uordblks;
  h.w->ReqTimer.SetMode(0);
  line.Run(200, deliver);  // the last answers on the line are read

  EXPECT_GT(jammed, SoakMinutes() * 2);
  EXPECT_GT(intact, SoakMinutes() * 50);
  EXPECT_EQ(freq.wrong, 0);
  EXPECT_TRUE(freq.pending.empty());
  EXPECT_GT(freq.changes, SoakMinutes() * 20);
  EXPECT_EQ(mode.wrong, 0);
  EXPECT_TRUE(mode.pending.empty());
  EXPECT_GT(mode.changes, SoakMinutes() / 2);
#if !defined(__SANITIZE_ADDRESS__)
  // Strings come and go, but nothing may pile up: allow a few kilobytes of allocator slack.
  EXPECT_LE(heapAtEnd, heapAfterFirstMinute + 16 * 1024);
#endif
  std::printf(
      "soak: %lld replies intact, %lld jammed; heap %zu bytes after 1 min, %zu at the end\n",
      static_cast<long long>(intact), static_cast<long long>(jammed), heapAfterFirstMinute,
      heapAtEnd);
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// A simulated CI-V bus with one or more radios on it, for tests, benchmarks and the demo.
//
// SimBus is the protocol alone (bytes in, bytes out, time given by the caller). PtyRadio puts a
// SimBus on a real serial line: a pseudo-terminal it opens (the program is pointed at its slave
// path), or a given serial device. Its frame reading is written from the protocol on its own and
// shares no code with the program's receiver, so that each checks the other.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tarn::sim {

struct RadioState {
  std::uint8_t address = 0x08;
  std::uint64_t frequencyHz = 145'500'000;
  std::uint8_t mode = 5;          // FM
  std::uint8_t filter = 1;        // wide
  bool fiveByteFrequency = true;  // answer 0x03 with 5 data bytes, or 4
  // Set-frequency requests outside this range are refused with 0xFA.
  std::uint64_t minFrequencyHz = 30'000;
  std::uint64_t maxFrequencyHz = 1'999'999'999;
};

struct BusOptions {
  bool echo = true;           // the one-wire bus hands every byte sent back to its sender
  int replyDelayMs = 0;       // time between the end of a request and the reply
  bool jamInReplies = false;  // a 0xFC in the middle of every reply (the reply is lost)
  int noiseBytes = 0;         // random bytes put on the line after every reply
  bool silent = false;        // radios never answer (echo still works)
  std::uint32_t seed = 1;
};

// Modes a radio takes with 0x06: 0x00..0x08 (LSB to RTTY-R) and 0x0B, decimal 11 (synchronous AM).
bool IsKnownMode(std::uint8_t mode);
// Filters 1..3 (wide, middle, narrow). A set-mode request may also carry 0, "keep the current one".
bool IsKnownFilter(std::uint8_t filter);

// One frame the bus saw, as sent by the controller.
struct SeenFrame {
  std::uint8_t to = 0, from = 0, command = 0;
  std::string data;
};

// Frame reading: bytes before an FE FE preamble are ignored, and so are further FE bytes before the
// `to` byte. An FE where the `to`, `from` or command byte belongs means the frame in hand was cut
// off: it is dropped and that FE counts as the first byte of a new preamble. Inside the data FE is
// an ordinary byte. 0xFC anywhere drops the frame in hand; FD ends it, and a frame shorter than
// to, from and command is dropped. The seed is read once, at construction.
class SimBus {
 public:
  explicit SimBus(BusOptions options = {});

  // A radio with an address already on the bus replaces that radio. References stay valid.
  RadioState& AddRadio(RadioState radio);
  RadioState* Radio(std::uint8_t address);  // null when no radio has that address
  BusOptions& Options() { return options_; }

  // Bytes from the controller, received at `nowMs`. Echo and replies are queued with their due
  // time.
  void Receive(std::string_view bytes, std::int64_t nowMs);
  // Everything due by `nowMs`, in order; the rest stays queued.
  std::string TakeDue(std::int64_t nowMs);
  // The earliest due time of what is queued, or -1 when nothing is.
  std::int64_t NextDue() const;

  const std::vector<SeenFrame>& Frames() const { return frames_; }
  // Forgets the frames seen so far: a long run keeps its memory flat.
  void ClearFrames() { frames_.clear(); }

 private:
  void Feed(std::uint8_t byte, std::int64_t nowMs);
  void FinishFrame(std::int64_t nowMs);
  void ResetReader();
  void OnFrame(const SeenFrame& frame, std::int64_t nowMs);
  std::string Answer(RadioState& radio, const SeenFrame& frame);
  void Queue(std::string bytes, std::int64_t dueMs);
  std::uint32_t NextRandom();

  BusOptions options_;
  std::deque<RadioState> radios_;
  std::vector<SeenFrame> frames_;
  struct Pending {
    std::int64_t due;
    std::string bytes;
  };
  std::vector<Pending> queue_;
  // Frame reader state.
  std::string frameBytes_;
  int preambles_ = 0;
  std::uint32_t rng_;
};

class PtyRadio {
 public:
  // A new raw pseudo-terminal pair; the program opens SlavePath(). Null on failure, with `why`.
  static std::unique_ptr<PtyRadio> OpenPty(BusOptions options, std::string& why);
  // An existing serial device (a null-modem cable, a socat pair), raw, 9600 8N1.
  static std::unique_ptr<PtyRadio> OpenDevice(const std::string& path, BusOptions options,
                                              std::string& why);
  ~PtyRadio();

  const std::string& SlavePath() const { return slavePath_; }

  // Reads what arrived within `timeoutMs` and writes what is due, in the caller's thread.
  void ServeOnce(int timeoutMs);
  // Serves from a thread of its own until Stop() or destruction.
  void StartThread();
  void Stop();

  // The bus, under the lock that the serving thread takes.
  template <class F>
  auto WithBus(F&& f) {
    std::lock_guard<std::mutex> lock(mutex_);
    return f(bus_);
  }

  // Closes the line's end, as a pulled cable does; the program sees a hang-up.
  void Hangup();

 private:
  PtyRadio(int fd, std::string slavePath, BusOptions options, int slaveKeepAlive);
  std::string ReadAvailable();
  void WriteAll(const std::string& bytes);

  int fd_;
  int slaveKeepAlive_;      // keeps the pty usable before the program opens it; -1 for a device
  int wake_[2] = {-1, -1};  // a pipe: Stop() writes to wake the serving thread
  std::string slavePath_;
  std::mutex mutex_;
  SimBus bus_;
  std::thread thread_;
  std::atomic<bool> running_{false};
};

// Milliseconds of a monotonic clock, for the serving loop.
std::int64_t SteadyNowMs();

}  // namespace tarn::sim

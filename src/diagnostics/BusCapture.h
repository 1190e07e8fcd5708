// SPDX-License-Identifier: GPL-3.0-or-later
// BusCapture: the bytes of the serial line, both ways, as a pcapng capture for Wireshark.
//
// Each direction has a framer of its own, apart from the window's receiver: a CI-V frame
// FE FE ... FD is one record however many reads it took, and bytes outside a frame (noise, a frame
// cut by a jam code or by the line closing, bytes before a preamble) are records of their own.
// Put end to end, the records of one direction are exactly its bytes, in order. A record carries
// its direction in the packet flags and the time of its first byte, in microseconds: the moment
// the line became readable for the first bytes of a read that the sleeping program was woken for,
// else the moment of the read (on the pump's 50 ms grid) or of the write.
//
// Each port and speed is an interface of its own, whose description names both. The link type is
// USER0 (147), which the CI-V dissector (tools/wireshark/civ.lua) takes.
//
// Records go out whole, one write per read or write of the line, so a capture cut at any moment
// reads up to its last whole record. A failed write is told once through `failed`; the capture
// stops there and the line goes on as before.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarn {

class BusCapture {
 public:
  using Micros = std::int64_t;  // since 1970-01-01 UTC
  using Now = std::function<Micros()>;
  static Micros WallClock();

  // "-" is standard output, which is then kept for the capture alone: what else the program
  // prints goes to standard error. A named pipe waits for its reader. Nothing when the file cannot
  // be made or written; `why` says why.
  static std::unique_ptr<BusCapture> Create(const std::string& path, const std::string& application,
                                            Now now, std::string& why);
  // Writes to `fd`, which it closes at the end when `closeFd`. Writes the section header at once.
  BusCapture(int fd, bool closeFd, const std::string& application, Now now);
  // Writes what is held (frames without their end yet) as records of their own.
  ~BusCapture();
  BusCapture(const BusCapture&) = delete;
  BusCapture& operator=(const BusCapture&) = delete;

  // The line now in use: a new interface when it differs from the last one.
  void LineSet(const std::string& name, const std::string& description);
  // The line closed: frames in hand are cut.
  void LineClosed();
  // The line became readable: the bytes of the next read arrived about now.
  void Readable();
  void Read(std::string_view bytes);
  void Wrote(std::string_view bytes);

  bool Failed() const { return !error_.empty(); }
  // Told once, at the first write that fails: what stopped the capture.
  std::function<void(const std::string& why)> failed;

 private:
  enum Direction : std::uint32_t { kInbound = 1, kOutbound = 2 };
  struct Framer {
    explicit Framer(Direction d) : direction(d) {}
    Direction direction;
    std::string held;  // bytes not yet in a record
    bool inFrame = false;
    Micros since = 0;  // time of the first held byte
  };
  void Feed(Framer& f, std::string_view bytes, Micros first, Micros rest);
  void Record(Framer& f, std::size_t length);
  void Cut(Framer& f) { Record(f, f.held.size()); }
  void AddInterface(const std::string& name, const std::string& description);
  void Block(std::uint32_t type, std::string body);
  void Flush();

  int fd_;
  bool closeFd_;
  Now now_;
  std::string blocks_;  // whole blocks waiting for the next Flush
  std::string lineDescription_;
  std::uint32_t interfaces_ = 0;
  std::optional<Micros> readableAt_;
  Framer inbound_{kInbound};
  Framer outbound_{kOutbound};
  std::string error_;
};

}  // namespace tarn

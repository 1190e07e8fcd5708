// SPDX-License-Identifier: GPL-3.0-or-later
#include "diagnostics/BusCapture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>

#include "link/Civ.h"

namespace tarn {

namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint16_t kLinkTypeUser0 = 147;
constexpr std::uint16_t kOptEnd = 0;
constexpr std::uint16_t kShbUserAppl = 4;
constexpr std::uint16_t kIfName = 2, kIfDescription = 3, kIfTsResol = 9;
constexpr std::uint16_t kEpbFlags = 2;
constexpr char kMicroseconds = 6;

constexpr std::size_t kShortestFrame = 6;  // FE FE to from command FD
// Far beyond any CI-V frame; a longer run without an end byte is cut, so that memory stays bounded.
constexpr std::size_t kLongestFrame = 1024;

// pcapng takes the writer's byte order, which the section header's magic tells the reader.
template <class T>
void Put(std::string& s, T value) {
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  s.append(raw, sizeof(T));
}

void PadTo4(std::string& s) {
  s.append((4 - s.size() % 4) % 4, '\0');
}

void PutOption(std::string& s, std::uint16_t code, std::string_view value) {
  Put(s, code);
  Put(s, static_cast<std::uint16_t>(value.size()));
  s.append(value);
  PadTo4(s);
}

bool IsPreamble(char c) {
  return static_cast<unsigned char>(c) == civ::kPreamble;
}

}  // namespace

BusCapture::Micros BusCapture::WallClock() {
  using namespace std::chrono;
  return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

std::unique_ptr<BusCapture> BusCapture::Create(const std::string& path,
                                               const std::string& application, Now now,
                                               std::string& why) {
  int fd = -1;
  if (path == "-") {
    fd = ::dup(STDOUT_FILENO);
    if (fd >= 0) ::dup2(STDERR_FILENO, STDOUT_FILENO);
  } else {
    fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  }
  if (fd < 0) {
    why = std::strerror(errno);
    return nullptr;
  }
  auto capture = std::make_unique<BusCapture>(fd, true, application, std::move(now));
  if (capture->Failed()) {
    why = capture->error_;
    return nullptr;
  }
  return capture;
}

BusCapture::BusCapture(int fd, bool closeFd, const std::string& application, Now now)
    : fd_(fd), closeFd_(closeFd), now_(std::move(now)) {
  // A reader that goes away is a failed write to tell, not a signal that ends the program.
  std::signal(SIGPIPE, SIG_IGN);
  std::string body;
  Put(body, kByteOrderMagic);
  Put(body, std::uint16_t{1});
  Put(body, std::uint16_t{0});
  Put(body, std::int64_t{-1});  // section length unknown: the capture grows as it goes
  PutOption(body, kShbUserAppl, application);
  PutOption(body, kOptEnd, {});
  Block(kSectionHeader, std::move(body));
  Flush();
}

BusCapture::~BusCapture() {
  LineClosed();
  if (closeFd_) ::close(fd_);
}

void BusCapture::LineSet(const std::string& name, const std::string& description) {
  if (interfaces_ > 0 && description == lineDescription_) return;
  // Frames in hand belong to the line they began on.
  LineClosed();
  AddInterface(name, description);
  Flush();
}

void BusCapture::LineClosed() {
  Cut(inbound_);
  Cut(outbound_);
  inbound_.inFrame = outbound_.inFrame = false;
  Flush();
}

void BusCapture::Readable() {
  if (!readableAt_) readableAt_ = now_();
}

void BusCapture::Read(std::string_view bytes) {
  const Micros at = now_();
  // Only the first bytes made the line readable; the rest came later, at some moment before now.
  Feed(inbound_, bytes, readableAt_.value_or(at), at);
  readableAt_.reset();
  Flush();
}

void BusCapture::Wrote(std::string_view bytes) {
  const Micros at = now_();
  Feed(outbound_, bytes, at, at);
  Flush();
}

// A frame opens at FE FE and ends at FD once to, from and command are in, as the receiver reads
// it; a jam code cuts it, the jam byte being its last.
void BusCapture::Feed(Framer& f, std::string_view bytes, Micros first, Micros rest) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (f.held.empty()) f.since = i == 0 ? first : rest;
    f.held += c;
    const auto byte = static_cast<unsigned char>(c);
    if (!f.inFrame) {
      if (IsPreamble(c) && f.held.size() >= 2 && IsPreamble(f.held[f.held.size() - 2])) {
        if (f.held.size() > 2) {
          Record(f, f.held.size() - 2);
          f.since = i == 1 ? first : rest;  // the first preamble byte's
        }
        f.inFrame = true;
      }
    } else if (byte == civ::kJam || (byte == civ::kEnd && f.held.size() >= kShortestFrame) ||
               f.held.size() >= kLongestFrame) {
      Cut(f);
      f.inFrame = false;
    }
  }
  // Bytes outside a frame go out with the read that brought them, but for an FE that may open one.
  if (f.inFrame) return;
  const std::size_t keep = !f.held.empty() && IsPreamble(f.held.back()) ? 1 : 0;
  if (f.held.size() <= keep) return;
  Record(f, f.held.size() - keep);
  if (keep == 1) f.since = bytes.size() == 1 ? first : rest;
}

void BusCapture::Record(Framer& f, std::size_t length) {
  if (length == 0) return;
  if (interfaces_ == 0) AddInterface("serial", "serial line");
  std::string body;
  Put(body, interfaces_ - 1);
  Put(body, static_cast<std::uint32_t>(static_cast<std::uint64_t>(f.since) >> 32));
  Put(body, static_cast<std::uint32_t>(static_cast<std::uint64_t>(f.since)));
  Put(body, static_cast<std::uint32_t>(length));
  Put(body, static_cast<std::uint32_t>(length));
  body.append(f.held, 0, length);
  PadTo4(body);
  Put(body, kEpbFlags);
  Put(body, std::uint16_t{4});
  Put(body, static_cast<std::uint32_t>(f.direction));
  PutOption(body, kOptEnd, {});
  Block(kEnhancedPacket, std::move(body));
  f.held.erase(0, length);
}

void BusCapture::AddInterface(const std::string& name, const std::string& description) {
  std::string body;
  Put(body, kLinkTypeUser0);
  Put(body, std::uint16_t{0});
  Put(body, std::uint32_t{0});  // no snapshot length: records are whole
  PutOption(body, kIfName, name);
  PutOption(body, kIfDescription, description);
  PutOption(body, kIfTsResol, std::string_view(&kMicroseconds, 1));
  PutOption(body, kOptEnd, {});
  Block(kInterfaceDescription, std::move(body));
  lineDescription_ = description;
  ++interfaces_;
}

void BusCapture::Block(std::uint32_t type, std::string body) {
  if (Failed()) return;
  const auto total = static_cast<std::uint32_t>(body.size() + 12);
  Put(blocks_, type);
  Put(blocks_, total);
  blocks_ += body;
  Put(blocks_, total);
}

// One write for all that waits: each read or write of the line costs at most one system call.
void BusCapture::Flush() {
  std::size_t done = 0;
  while (done < blocks_.size() && !Failed()) {
    const ssize_t n = ::write(fd_, blocks_.data() + done, blocks_.size() - done);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n == 0 || errno != EINTR) {
      error_ = n == 0 ? "the file takes no more bytes" : std::strerror(errno);
      if (failed) failed(error_);
    }
  }
  blocks_.clear();
}

}  // namespace tarn

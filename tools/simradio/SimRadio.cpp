// SPDX-License-Identifier: GPL-3.0-or-later
#include "simradio/SimRadio.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace tarn::sim {
namespace {

constexpr std::uint8_t kPreamble = 0xFE;
constexpr std::uint8_t kEndOfMessage = 0xFD;
constexpr std::uint8_t kJam = 0xFC;
constexpr std::uint8_t kOk = 0xFB;
constexpr std::uint8_t kNg = 0xFA;
// Noise is drawn below the first answer code, so it can never be read as a frame or an answer.
constexpr std::uint8_t kFirstReservedByte = kNg;

constexpr std::uint8_t kReadFrequency = 0x03;
constexpr std::uint8_t kReadMode = 0x04;
constexpr std::uint8_t kSetFrequency = 0x05;
constexpr std::uint8_t kSetMode = 0x06;

constexpr std::uint8_t kLastPlainMode = 0x08;
constexpr std::uint8_t kSyncAmMode =
    0x0B;  // decimal 11: the byte the program writes and reads as SYNC-AM
constexpr std::uint8_t kKeepFilter = 0;
constexpr std::uint8_t kMaxFilter = 3;

constexpr std::size_t kHeaderBytes = 3;  // to, from, command
// A frame that runs this long without an end is garbage; dropping it keeps memory bounded.
constexpr std::size_t kMaxFrameBytes = 256;
constexpr std::size_t kShortFrequencyBytes = 4;
constexpr std::size_t kLongFrequencyBytes = 5;

constexpr int kWriteRetries = 20;
constexpr int kWriteRetryWaitMs = 50;
// The serving thread sleeps until the line has bytes, a reply falls due, or Stop() wakes it, so an
// idle radio costs no wake-ups; this bound only keeps a lost wake-up from hanging Stop().
constexpr int kThreadPollMs = 1000;

// Packed decimal, least significant pair first. Digits above the field are dropped, as a radio
// that answers in four bytes cannot express 100 MHz and above.
std::string EncodeFrequency(std::uint64_t hz, std::size_t bytes) {
  std::string out;
  for (std::size_t i = 0; i < bytes; ++i) {
    const unsigned low = hz % 10;
    hz /= 10;
    const unsigned high = hz % 10;
    hz /= 10;
    out.push_back(static_cast<char>((high << 4) | low));
  }
  return out;
}

bool DecodeFrequency(std::string_view data, std::uint64_t& hz) {
  if (data.size() != kShortFrequencyBytes && data.size() != kLongFrequencyBytes) return false;
  std::uint64_t value = 0;
  for (auto it = data.rbegin(); it != data.rend(); ++it) {
    const auto byte = static_cast<std::uint8_t>(*it);
    const unsigned high = byte >> 4, low = byte & 0x0F;
    if (high > 9 || low > 9) return false;
    value = value * 100 + high * 10 + low;
  }
  hz = value;
  return true;
}

bool SetFrequency(RadioState& radio, std::string_view data) {
  std::uint64_t hz = 0;
  if (!DecodeFrequency(data, hz)) return false;
  if (hz < radio.minFrequencyHz || hz > radio.maxFrequencyHz) return false;
  radio.frequencyHz = hz;
  return true;
}

bool SetMode(RadioState& radio, std::string_view data) {
  if (data.size() != 2) return false;
  const auto mode = static_cast<std::uint8_t>(data[0]);
  const auto filter = static_cast<std::uint8_t>(data[1]);
  if (!IsKnownMode(mode)) return false;
  if (filter != kKeepFilter && !IsKnownFilter(filter)) return false;
  radio.mode = mode;
  if (filter != kKeepFilter) radio.filter = filter;
  return true;
}

char Byte(std::uint8_t value) {
  return static_cast<char>(value);
}

}  // namespace

bool IsKnownMode(std::uint8_t mode) {
  return mode <= kLastPlainMode || mode == kSyncAmMode;
}

bool IsKnownFilter(std::uint8_t filter) {
  return filter >= 1 && filter <= kMaxFilter;
}

// xorshift32 sticks at zero, so a zero seed is replaced by a fixed non-zero one.
SimBus::SimBus(BusOptions options) : options_(options), rng_(options.seed ? options.seed : 1) {}

RadioState& SimBus::AddRadio(RadioState radio) {
  if (RadioState* existing = Radio(radio.address)) {
    *existing = radio;
    return *existing;
  }
  radios_.push_back(radio);
  return radios_.back();
}

RadioState* SimBus::Radio(std::uint8_t address) {
  for (RadioState& radio : radios_) {
    if (radio.address == address) return &radio;
  }
  return nullptr;
}

void SimBus::Receive(std::string_view bytes, std::int64_t nowMs) {
  // The echo is queued before any byte is read, so it always comes ahead of the replies.
  if (options_.echo && !bytes.empty()) Queue(std::string(bytes), nowMs);
  for (char c : bytes) Feed(static_cast<std::uint8_t>(c), nowMs);
}

void SimBus::Feed(std::uint8_t byte, std::int64_t nowMs) {
  if (byte == kJam) {
    ResetReader();
    return;
  }
  if (preambles_ < 2) {
    preambles_ = byte == kPreamble ? preambles_ + 1 : 0;
    return;
  }
  if (byte == kEndOfMessage) {
    FinishFrame(nowMs);
    return;
  }
  if (byte == kPreamble && frameBytes_.size() < kHeaderBytes) {
    if (frameBytes_.empty()) return;  // a longer preamble
    frameBytes_.clear();
    preambles_ = 1;
    return;
  }
  if (frameBytes_.size() >= kMaxFrameBytes) {
    ResetReader();
    return;
  }
  frameBytes_.push_back(static_cast<char>(byte));
}

void SimBus::FinishFrame(std::int64_t nowMs) {
  if (frameBytes_.size() < kHeaderBytes) {
    ResetReader();
    return;
  }
  SeenFrame frame;
  frame.to = static_cast<std::uint8_t>(frameBytes_[0]);
  frame.from = static_cast<std::uint8_t>(frameBytes_[1]);
  frame.command = static_cast<std::uint8_t>(frameBytes_[2]);
  frame.data = frameBytes_.substr(kHeaderBytes);
  ResetReader();
  frames_.push_back(frame);
  OnFrame(frame, nowMs);
}

void SimBus::ResetReader() {
  frameBytes_.clear();
  preambles_ = 0;
}

void SimBus::OnFrame(const SeenFrame& frame, std::int64_t nowMs) {
  RadioState* radio = Radio(frame.to);
  if (radio == nullptr || options_.silent) return;
  std::string reply{Byte(kPreamble), Byte(kPreamble), Byte(frame.from), Byte(radio->address)};
  reply += Answer(*radio, frame);
  reply.push_back(Byte(kEndOfMessage));
  if (options_.jamInReplies) reply.insert(reply.size() / 2, 1, Byte(kJam));
  for (int i = 0; i < options_.noiseBytes; ++i) {
    reply.push_back(Byte(static_cast<std::uint8_t>(NextRandom() % kFirstReservedByte)));
  }
  Queue(std::move(reply), nowMs + std::max(0, options_.replyDelayMs));
}

std::string SimBus::Answer(RadioState& radio, const SeenFrame& frame) {
  switch (frame.command) {
    case kReadFrequency:
      return Byte(kReadFrequency) + EncodeFrequency(radio.frequencyHz, radio.fiveByteFrequency
                                                                           ? kLongFrequencyBytes
                                                                           : kShortFrequencyBytes);
    case kReadMode:
      return {Byte(kReadMode), Byte(radio.mode), Byte(radio.filter)};
    case kSetFrequency:
      return {Byte(SetFrequency(radio, frame.data) ? kOk : kNg)};
    case kSetMode:
      return {Byte(SetMode(radio, frame.data) ? kOk : kNg)};
    default:
      return {Byte(kNg)};
  }
}

void SimBus::Queue(std::string bytes, std::int64_t dueMs) {
  // Kept in due order; equal due times keep the order they were queued in.
  auto at = std::upper_bound(queue_.begin(), queue_.end(), dueMs,
                             [](std::int64_t due, const Pending& p) { return due < p.due; });
  queue_.insert(at, Pending{dueMs, std::move(bytes)});
}

std::string SimBus::TakeDue(std::int64_t nowMs) {
  std::string out;
  auto end = queue_.begin();
  while (end != queue_.end() && end->due <= nowMs) {
    out += end->bytes;
    ++end;
  }
  queue_.erase(queue_.begin(), end);
  return out;
}

std::int64_t SimBus::NextDue() const {
  return queue_.empty() ? -1 : queue_.front().due;
}

std::uint32_t SimBus::NextRandom() {
  rng_ ^= rng_ << 13;
  rng_ ^= rng_ >> 17;
  rng_ ^= rng_ << 5;
  return rng_;
}

namespace {

std::string Failure(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

bool MakeRaw(int fd, bool serialLine) {
  termios tio{};
  if (tcgetattr(fd, &tio) != 0) return false;
  cfmakeraw(&tio);
  tio.c_cc[VMIN] = 1;
  tio.c_cc[VTIME] = 0;
  if (serialLine) {
    tio.c_cflag &= ~(CSTOPB | PARENB | CRTSCTS);
    tio.c_cflag |= CS8 | CLOCAL | CREAD;
    cfsetispeed(&tio, B9600);
    cfsetospeed(&tio, B9600);
  }
  return tcsetattr(fd, TCSANOW, &tio) == 0;
}

bool SetNonBlocking(int fd) {
  const int flags = fcntl(fd, F_GETFL);
  return flags >= 0 && fcntl(fd, F_SETFL, flags | O_NONBLOCK) == 0;
}

std::string SlaveName(int master) {
#if defined(__GLIBC__)
  char name[256];
  if (ptsname_r(master, name, sizeof name) != 0) return {};
  return name;
#else
  const char* name = ptsname(master);
  return name ? name : "";
#endif
}

}  // namespace

std::int64_t SteadyNowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

PtyRadio::PtyRadio(int fd, std::string slavePath, BusOptions options, int slaveKeepAlive)
    : fd_(fd), slaveKeepAlive_(slaveKeepAlive), slavePath_(std::move(slavePath)), bus_(options) {
  if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) wake_[0] = wake_[1] = -1;
}

std::unique_ptr<PtyRadio> PtyRadio::OpenPty(BusOptions options, std::string& why) {
  int master = -1, slave = -1;
  if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) {
    why = Failure("openpty");
    return nullptr;
  }
  // Without raw mode on both ends the pty echoes by itself and rewrites line ends.
  std::string path = SlaveName(master);
  if (!MakeRaw(master, false) || !MakeRaw(slave, false) || !SetNonBlocking(master) ||
      path.empty()) {
    why = Failure("setting up the pseudo-terminal");
    close(master);
    close(slave);
    return nullptr;
  }
  fcntl(master, F_SETFD, FD_CLOEXEC);
  fcntl(slave, F_SETFD, FD_CLOEXEC);
  return std::unique_ptr<PtyRadio>(new PtyRadio(master, std::move(path), options, slave));
}

std::unique_ptr<PtyRadio> PtyRadio::OpenDevice(const std::string& path, BusOptions options,
                                               std::string& why) {
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    why = Failure("opening " + path);
    return nullptr;
  }
  if (!MakeRaw(fd, true)) {
    why = Failure("setting up " + path + " as a serial line");
    close(fd);
    return nullptr;
  }
  // Level converters on the CI-V jack often draw their power from DTR and RTS. Devices without
  // modem lines (some adapters, socat pairs) refuse this, which is harmless.
  int lines = TIOCM_DTR | TIOCM_RTS;
  (void)ioctl(fd, TIOCMBIS, &lines);
  tcflush(fd, TCIOFLUSH);
  return std::unique_ptr<PtyRadio>(new PtyRadio(fd, path, options, -1));
}

PtyRadio::~PtyRadio() {
  Hangup();
  for (int& fd : wake_) {
    if (fd >= 0) close(fd);
    fd = -1;
  }
}

std::string PtyRadio::ReadAvailable() {
  std::string data;
  char buffer[512];
  for (;;) {
    const ssize_t n = read(fd_, buffer, sizeof buffer);
    if (n > 0) {
      data.append(buffer, static_cast<std::size_t>(n));
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    return data;  // drained (EAGAIN), or the line is down
  }
}

void PtyRadio::WriteAll(const std::string& bytes) {
  std::size_t done = 0;
  int retries = 0;
  while (done < bytes.size()) {
    const ssize_t n = write(fd_, bytes.data() + done, bytes.size() - done);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    // A full line (nobody reading the other end) drops what does not fit, as a real bus would.
    if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return;
    if (++retries > kWriteRetries) return;
    pollfd p{fd_, POLLOUT, 0};
    poll(&p, 1, kWriteRetryWaitMs);
  }
}

void PtyRadio::ServeOnce(int timeoutMs) {
  if (fd_ < 0) return;
  int waitMs = std::max(0, timeoutMs);
  const std::int64_t next = WithBus([](SimBus& bus) { return bus.NextDue(); });
  if (next >= 0) {
    waitMs = static_cast<int>(std::clamp<std::int64_t>(next - SteadyNowMs(), 0, waitMs));
  }
  pollfd p[2] = {{fd_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
  const int ready = poll(p, wake_[0] >= 0 ? 2 : 1, waitMs);
  if (ready > 0 && (p[1].revents & POLLIN)) return;  // Stop() is waiting
  std::string data;
  if (ready > 0 && (p[0].revents & POLLIN)) data = ReadAvailable();
  // Ready yet nothing to read: the line is hung up or in error. Wait out the time, not spin.
  if (ready > 0 && data.empty()) poll(&p[1], wake_[0] >= 0 ? 1 : 0, waitMs);
  std::string out = WithBus([&](SimBus& bus) {
    const std::int64_t now = SteadyNowMs();
    if (!data.empty()) bus.Receive(data, now);
    return bus.TakeDue(now);
  });
  if (!out.empty()) WriteAll(out);
}

void PtyRadio::StartThread() {
  if (thread_.joinable() || fd_ < 0) return;
  running_ = true;
  thread_ = std::thread([this] {
    while (running_) ServeOnce(kThreadPollMs);
  });
}

void PtyRadio::Stop() {
  running_ = false;
  if (!thread_.joinable()) return;
  if (wake_[1] >= 0) (void)!write(wake_[1], "x", 1);
  thread_.join();
  char drain[16];
  while (wake_[0] >= 0 && read(wake_[0], drain, sizeof drain) > 0) {
  }
}

void PtyRadio::Hangup() {
  Stop();
  if (fd_ >= 0) close(fd_);
  if (slaveKeepAlive_ >= 0) close(slaveKeepAlive_);
  fd_ = -1;
  slaveKeepAlive_ = -1;
}

}  // namespace tarn::sim

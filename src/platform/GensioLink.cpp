// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GensioLink.h"

#include <gensio/sergensio.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace tarn {

namespace {

// Received bytes the window has not read yet; beyond this gensio stops reading, and TCP holds the
// rest at the far end.
constexpr std::size_t kMaxPendingIn = 64 * 1024;
// A connection that died without a word shows within a minute: 15 s idle, then 4 probes 10 s
// apart; output unacknowledged for 50 s counts as dead too.
constexpr int kKeepIdleS = 15;
constexpr int kKeepIntervalS = 10;
constexpr int kKeepProbes = 4;
constexpr unsigned kUserTimeoutMs = 50'000;

}  // namespace

Link::Link(GensioSerialDriver::Loop& loop)
    : loop(loop), wake(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  std::lock_guard lock(loop.m);
  ++loop.links;
}

// The gensio is freed only here, so that a call into it from any thread that holds the link never
// meets a freed one; once closed it calls nothing of ours.
Link::~Link() {
  if (io != nullptr) gensio_free(io);
  ::close(wake);
  std::lock_guard lock(loop.m);
  --loop.links;
  loop.linkGone.notify_all();
}

void Fail(Link& link, Link::State state, std::string why) {
  {
    std::lock_guard lock(link.m);
    if (state == Link::State::Failed ? link.state != Link::State::Connecting
                                     : link.state != Link::State::Open)
      return;
    link.state = state;
    link.why = std::move(why);
  }
  link.changed.notify_all();
  link.Signal();
}

namespace {

void Service(Link& link);

void CloseDone(gensio*, void* data) {
  auto& link = *static_cast<Link*>(data);
  std::shared_ptr<Link> last;
  std::lock_guard lock(link.m);
  link.closed = true;
  last = std::move(link.self);
  link.changed.notify_all();
}

void Notice(Link& link, std::string text) {
  {
    std::lock_guard lock(link.m);
    if (link.noticeGiven) return;
    link.noticeGiven = true;
    link.notice = std::move(text);
  }
  link.Signal();
}

void NoSpeed(Link& link, int err) {
  Notice(link,
         std::string("the far end sets no speed (") + gensio_err_to_str(err) + "): set it there");
}

// The one place that knows how this gensio version sets a far line (3.0 drops sergensio).
#if GENSIO_VERSION_MAJOR >= 3
#error "gensio 3 sets the far line through gensio_acontrol: port ApplySettings"
#endif
void SpeedSet(sergensio*, int err, unsigned int value, void* data) {
  auto& link = *static_cast<Link*>(data);
  unsigned int wanted = 0;
  {
    std::lock_guard lock(link.m);
    if (link.settings) wanted = static_cast<unsigned int>(link.settings->baud);
  }
  if (err != 0) {
    NoSpeed(link, err);
  } else if (value != wanted) {
    Notice(link,
           "the far end runs at " + std::to_string(value) + " baud, not " + std::to_string(wanted));
  }
}

void ApplySettings(gensio* io, Link& link, const LineSettings& s) {
  sergensio* sio = gensio_to_sergensio(io);
  if (sio == nullptr) return;  // raw TCP: the far end's speed is set there
  const unsigned parity = s.parity == 'O'   ? SERGENSIO_PARITY_ODD
                          : s.parity == 'E' ? SERGENSIO_PARITY_EVEN
                                            : SERGENSIO_PARITY_NONE;
  // No control waits for its answer: a far end that never acknowledges one stalls nothing.
  int err = sergensio_baud(sio, static_cast<unsigned>(s.baud), SpeedSet, &link);
  if (err != 0) {
    NoSpeed(link, err);
    return;
  }
  sergensio_datasize(sio, static_cast<unsigned>(s.dataBits), nullptr, nullptr);
  sergensio_parity(sio, parity, nullptr, nullptr);
  sergensio_stopbits(sio, static_cast<unsigned>(s.stopBits), nullptr, nullptr);
  sergensio_flowcontrol(sio,
                        s.xonXoff ? SERGENSIO_FLOWCONTROL_XON_XOFF : SERGENSIO_FLOWCONTROL_NONE,
                        nullptr, nullptr);
}

// gensio 2.6 has no keepalive setting for a connecting socket, nor a way to get its descriptor:
// the socket is found among ours by its local port.
void KeepAlive(gensio* io) {
  char port[16] = "0";
  gensiods len = sizeof port;
  if (gensio_control(io, GENSIO_CONTROL_DEPTH_FIRST, GENSIO_CONTROL_GET, GENSIO_CONTROL_LPORT, port,
                     &len) != 0)
    return;
  const int wanted = std::atoi(port);
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const int fd = std::atoi(entry.path().filename().c_str());
    struct stat st {};
    sockaddr_storage addr{};
    socklen_t size = sizeof addr;
    if (::fstat(fd, &st) != 0 || !S_ISSOCK(st.st_mode) ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &size) != 0)
      continue;
    const int local =
        addr.ss_family == AF_INET    ? ntohs(reinterpret_cast<sockaddr_in*>(&addr)->sin_port)
        : addr.ss_family == AF_INET6 ? ntohs(reinterpret_cast<sockaddr_in6*>(&addr)->sin6_port)
                                     : -1;
    if (local != wanted) continue;
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    ::setsockopt(fd, IPPROTO_TCP, TCP_KEEPIDLE, &kKeepIdleS, sizeof kKeepIdleS);
    ::setsockopt(fd, IPPROTO_TCP, TCP_KEEPINTVL, &kKeepIntervalS, sizeof kKeepIntervalS);
    ::setsockopt(fd, IPPROTO_TCP, TCP_KEEPCNT, &kKeepProbes, sizeof kKeepProbes);
    ::setsockopt(fd, IPPROTO_TCP, TCP_USER_TIMEOUT, &kUserTimeoutMs, sizeof kUserTimeoutMs);
  }
}

int OnRead(Link& link, gensio* io, int err, const unsigned char* buf, gensiods* buflen) {
  if (err != 0) {
    gensio_set_read_callback_enable(io, false);
    Fail(link, Link::State::Lost, gensio_err_to_str(err));
    Service(link);
    return 0;
  }
  bool full = false;
  {
    std::lock_guard lock(link.m);
    const gensiods take = std::min<gensiods>(*buflen, kMaxPendingIn - link.in.size());
    link.in.append(reinterpret_cast<const char*>(buf), take);
    full = take < *buflen;
    link.readPaused = full;
    *buflen = take;
  }
  if (full) gensio_set_read_callback_enable(io, false);
  link.Signal();
  return 0;
}

// Sends what waits, at once where the socket takes it: the write callback, which costs gensio's
// thread another wake-up, stays on only while some is left.
void Send(Link& link, gensio* io) {
  std::unique_lock lock(link.m);
  gensiods count = 0;
  const int err =
      link.out.empty() ? 0 : gensio_write(io, &count, link.out.data(), link.out.size(), nullptr);
  link.out.erase(0, count);
  const bool left = !link.out.empty();
  lock.unlock();
  gensio_set_write_callback_enable(io, left && err == 0);
  if (err != 0) {
    Fail(link, Link::State::Lost, gensio_err_to_str(err));
    Service(link);
  }
}

int Event(gensio* io, void* data, int event, int err, unsigned char* buf, gensiods* buflen,
          const char* const*) {
  auto& link = *static_cast<Link*>(data);
  switch (event) {
    case GENSIO_EVENT_READ:
      return OnRead(link, io, err, buf, buflen);
    case GENSIO_EVENT_WRITE_READY:
      Send(link, io);
      return 0;
    default:
      return GE_NOTSUP;
  }
}

void OpenDone(gensio* io, int err, void* data) {
  auto& link = *static_cast<Link*>(data);
  if (err != 0) {
    Fail(link, Link::State::Failed, gensio_err_to_str(err));
  } else {
    {
      std::lock_guard lock(link.m);
      if (link.state == Link::State::Connecting) link.state = Link::State::Open;
      link.settingsDue = link.settings.has_value();
    }
    link.changed.notify_all();
    link.Signal();
    KeepAlive(io);
    gensio_set_read_callback_enable(io, true);
  }
  Service(link);
}

// On gensio's thread: whatever the link's state asks of its gensio now.
void Service(Link& link) {
  std::unique_lock lock(link.m);
  gensio* const io = link.io;
  if (io == nullptr || link.opening || link.closeStarted || link.closed) return;
  if (link.released || link.state == Link::State::Failed || link.state == Link::State::Lost) {
    link.closeStarted = true;
    lock.unlock();
    if (gensio_close(io, CloseDone, &link) != 0) CloseDone(io, &link);
    return;
  }
  if (link.state != Link::State::Open) return;
  const bool resume = std::exchange(link.readPaused, false);
  const bool send = !link.out.empty();
  const bool apply = std::exchange(link.settingsDue, false) && link.settings;
  const LineSettings settings = link.settings.value_or(LineSettings{});
  lock.unlock();
  if (resume) gensio_set_read_callback_enable(io, true);
  if (send) Send(link, io);
  if (apply) ApplySettings(io, link, settings);
}

}  // namespace

void RunKicked(gensio_runner*, void* data) {
  auto& loop = *static_cast<GensioSerialDriver::Loop*>(data);
  std::deque<std::shared_ptr<Link>> links;
  {
    std::lock_guard lock(loop.m);
    links.swap(loop.kicked);
  }
  for (const auto& link : links) Service(*link);
}

// On a thread of its own, as a name lookup may take long: makes the gensio and starts its open,
// once the connection let go last has closed: ser2net refuses a device it still holds.
void Connect(const std::shared_ptr<Link>& link, const std::string& gensioString,
             const std::shared_ptr<Link>& last) {
  if (last) {
    std::unique_lock lock(last->m);
    last->changed.wait_for(lock, kCloseWait, [&] { return last->closed || last->io == nullptr; });
  }
  gensio* io = nullptr;
  const int err = str_to_gensio(gensioString.c_str(), link->loop.o, Event, link.get(), &io);
  if (err != 0) {
    Fail(*link, Link::State::Failed, gensio_err_to_str(err));
    return;
  }
  {
    std::lock_guard lock(link->m);
    if (link->released || link->state != Link::State::Connecting) {
      gensio_free(io);
      return;
    }
    link->io = io;
    link->self = link;
    link->opening = true;
  }
  const int openErr = gensio_open(io, OpenDone, link.get());
  {
    std::lock_guard lock(link->m);
    link->opening = false;
    if (openErr != 0) {
      link->io = nullptr;
      link->self.reset();
    }
  }
  if (openErr != 0) {
    gensio_free(io);
    Fail(*link, Link::State::Failed, gensio_err_to_str(openErr));
  }
  link->loop.Kick(link);
}

std::shared_ptr<Link> GensioSerialDriver::Loop::Park(std::shared_ptr<Link> link, std::string path) {
  std::lock_guard lock(m);
  parkedPath = std::move(path);
  return std::exchange(parked, std::move(link));
}

// A link that failed or was lost is not taken back: choosing its port again reconnects.
std::shared_ptr<Link> GensioSerialDriver::Loop::Unpark(const std::string& path) {
  std::shared_ptr<Link> link;
  bool samePort = false;
  {
    std::lock_guard lock(m);
    link = std::exchange(parked, nullptr);
    samePort = parkedPath == path;
  }
  if (!link) return nullptr;
  {
    std::lock_guard lock(link->m);
    const bool alive = link->state == Link::State::Connecting || link->state == Link::State::Open;
    if (alive && samePort) {
      link->in.clear();  // as a local port drops unread input when it closes
      return link;
    }
  }
  Release(link);
  return nullptr;
}

void GensioSerialDriver::Loop::Release(const std::shared_ptr<Link>& link) {
  if (!link) return;
  released = link;
  {
    std::lock_guard lock(link->m);
    link->released = true;
  }
  link->changed.notify_all();
  Kick(link);
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GensioSerial.h"

#include <gensio/gensio.h>
#include <gensio/sergensio.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/NetworkPort.h"

namespace tarn {

namespace {

// As on a local line: what the far end has not taken beyond this is dropped, a frame at a time.
constexpr std::size_t kMaxPendingOut = 64 * 1024;
// Received bytes the window has not read yet; beyond this gensio stops reading, and TCP holds the
// rest at the far end.
constexpr std::size_t kMaxPendingIn = 64 * 1024;
// A connection that died without a word shows within a minute: 15 s idle, then 4 probes 10 s
// apart; output unacknowledged for 50 s counts as dead too.
constexpr int kKeepIdleS = 15;
constexpr int kKeepIntervalS = 10;
constexpr int kKeepProbes = 4;
constexpr unsigned kUserTimeoutMs = 50'000;
// How long a new connection waits for the one let go before it to close.
constexpr std::chrono::milliseconds kCloseWait{1000};

void LogGensio(gensio_os_funcs*, gensio_log_levels level, const char* log, va_list args) {
  if (level > GENSIO_LOG_WARNING) return;
  std::fputs("gensio: ", stderr);
  std::vfprintf(stderr, log, args);
  std::fputc('\n', stderr);
}

}  // namespace

// One connection. The event loop's thread, the thread that opens it and gensio's thread share it
// under `m`. The gensio is freed only with the link, so any thread that holds the link may call
// into it: the window's thread writes to it straight, gensio's thread does all else.
struct Link {
  enum class State { Connecting, Open, Failed, Lost };

  explicit Link(GensioSerialDriver::Loop& loop);
  ~Link();

  void Signal() const {
    const std::uint64_t one = 1;
    (void)!::write(wake, &one, sizeof one);
  }

  GensioSerialDriver::Loop& loop;
  const int wake;
  std::mutex m;
  std::condition_variable changed;
  State state = State::Connecting;
  std::string why;
  std::string notice;
  bool noticeGiven = false;
  std::string in;
  std::string out;
  bool readPaused = false;
  std::optional<LineSettings> settings;
  bool settingsDue = false;
  gensio* io = nullptr;
  bool opening = false;   // the opening thread is inside gensio_open
  bool released = false;  // the device let go
  bool closeStarted = false;
  bool closed = false;
  std::shared_ptr<Link> self;  // held from the open until the gensio has closed
};

struct GensioSerialDriver::Loop {
  gensio_os_funcs* o = nullptr;
  gensio_os_proc_data* proc = nullptr;
  gensio_waiter* waiter = nullptr;
  gensio_runner* runner = nullptr;
  std::thread thread;
  bool stopping = false;
  std::mutex m;
  std::deque<std::shared_ptr<Link>> kicked;
  int links = 0;  // alive, closing ones too: the driver waits for them before it frees gensio
  std::condition_variable linkGone;

  void Start() {
    std::lock_guard lock(m);
    if (thread.joinable()) return;
    thread = std::thread([this] {
      for (;;) {
        gensio_os_funcs_wait(o, waiter, 1, nullptr);
        std::lock_guard stop(m);
        if (stopping) return;
      }
    });
  }

  // Asks gensio's thread to look at the link: start a close, resume reading, send, set the line.
  void Kick(const std::shared_ptr<Link>& link) {
    {
      std::lock_guard lock(m);
      kicked.push_back(link);
    }
    gensio_os_funcs_run(o, runner);  // GE_INUSE: already due, and it takes the whole queue
  }

  // The window closes a port and opens it again for every choice of port or speed, three times
  // at start. A connection let go is kept until the next open: the same port takes it back, with
  // its speed set afresh, so that the far end sees one connection, not a reconnect it may refuse
  // while it still closes the last one. Any other port closes it.
  std::shared_ptr<Link> Park(std::shared_ptr<Link> link, std::string path);
  std::shared_ptr<Link> Unpark(const std::string& path);
  void Release(const std::shared_ptr<Link>& link);

  std::shared_ptr<Link> parked;
  std::string parkedPath;
  std::weak_ptr<Link> released;  // the connection let go last, which may be closing still
};

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

void Notice(Link& link, std::string text) {
  {
    std::lock_guard lock(link.m);
    if (link.noticeGiven) return;
    link.noticeGiven = true;
    link.notice = std::move(text);
  }
  link.Signal();
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
    Notice(link,
           std::string("the far end sets no speed (") + gensio_err_to_str(err) + "): set it there");
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
    Notice(link,
           std::string("the far end sets no speed (") + gensio_err_to_str(err) + "): set it there");
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
void Connect(const std::shared_ptr<Link>& link, const std::string& spec,
             const std::shared_ptr<Link>& last) {
  if (last) {
    std::unique_lock lock(last->m);
    last->changed.wait_for(lock, kCloseWait, [&] { return last->closed || last->io == nullptr; });
  }
  gensio* io = nullptr;
  const int err = str_to_gensio(spec.c_str(), link->loop.o, Event, link.get(), &io);
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

class GensioDevice : public SerialDevice {
 public:
  GensioDevice(std::shared_ptr<Link> link, std::string path)
      : link_(std::move(link)), path_(std::move(path)) {}
  ~GensioDevice() override { link_->loop.Release(link_->loop.Park(link_, path_)); }

  // Takes effect on the far port once the line is open, and again at each call.
  bool Configure(const LineSettings& settings) override {
    {
      std::lock_guard lock(link_->m);
      link_->settings = settings;
      link_->settingsDue = link_->state == Link::State::Open;
      if (!link_->settingsDue) return true;
    }
    link_->loop.Kick(link_);
    return true;
  }

  void ReadAvailable(std::string& out) override {
    std::uint64_t count = 0;
    (void)!::read(link_->wake, &count, sizeof count);
    bool resume = false;
    {
      std::lock_guard lock(link_->m);
      out.append(link_->in);
      link_->in.clear();
      resume = link_->readPaused;
    }
    if (resume) link_->loop.Kick(link_);
  }

  // Straight to the socket while nothing waits before it, so that a frame costs gensio's thread
  // no wake-up; what the socket does not take waits for its write callback.
  bool Write(std::string_view bytes) override {
    std::unique_lock lock(link_->m);
    if (link_->state == Link::State::Failed || link_->state == Link::State::Lost) return false;
    if (link_->out.size() + bytes.size() > kMaxPendingOut) return false;
    gensio* const io = link_->io;
    const bool open = link_->state == Link::State::Open && !link_->closeStarted;
    if (!open || !link_->out.empty()) {
      link_->out.append(bytes);
      lock.unlock();
      if (open) link_->loop.Kick(link_);
      return true;  // or goes out once connected
    }
    lock.unlock();
    gensiods count = 0;
    if (gensio_write(io, &count, bytes.data(), bytes.size(), nullptr) != 0) count = bytes.size();
    if (count == bytes.size()) return true;
    lock.lock();
    link_->out.insert(0, bytes.substr(count));
    lock.unlock();
    gensio_set_write_callback_enable(io, true);
    return true;
  }

  bool WaitReadable(i64 maxMs) override {
    pollfd p{link_->wake, POLLIN, 0};
    const int timeout = maxMs < 0 ? 0 : maxMs > 60000 ? 60000 : static_cast<int>(maxMs);
    if (::poll(&p, 1, timeout) <= 0) return false;
    std::lock_guard lock(link_->m);
    return !link_->in.empty() || link_->state != Link::State::Connecting || !link_->notice.empty();
  }

  bool Lost() const override {
    std::lock_guard lock(link_->m);
    return link_->state == Link::State::Failed || link_->state == Link::State::Lost;
  }

  int Descriptor() const override { return link_->wake; }

  bool GaveUp(std::string& why) override {
    std::lock_guard lock(link_->m);
    if (link_->state != Link::State::Failed) return false;
    why = link_->why;
    return true;
  }

  std::string TakeNotice() override {
    std::lock_guard lock(link_->m);
    return std::exchange(link_->notice, {});
  }

 private:
  std::shared_ptr<Link> link_;
  std::string path_;
};

}  // namespace

std::shared_ptr<Link> GensioSerialDriver::Loop::Park(std::shared_ptr<Link> link, std::string path) {
  std::lock_guard lock(m);
  parkedPath = std::move(path);
  return std::exchange(parked, std::move(link));
}

// A link that failed or was lost is not taken back: choosing its port again reconnects.
std::shared_ptr<Link> GensioSerialDriver::Loop::Unpark(const std::string& path) {
  std::shared_ptr<Link> link;
  {
    std::lock_guard lock(m);
    link = std::exchange(parked, nullptr);
  }
  if (!link) return nullptr;
  {
    std::lock_guard lock(link->m);
    const bool alive = link->state == Link::State::Connecting || link->state == Link::State::Open;
    if (alive && parkedPath == path) {
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

GensioSerialDriver::GensioSerialDriver() : loop_(std::make_unique<Loop>()) {
  if (gensio_default_os_hnd(GENSIO_DEF_WAKE_SIG, &loop_->o) != 0) return;
  gensio_os_funcs_set_vlog(loop_->o, LogGensio);
  gensio_os_proc_setup(loop_->o, &loop_->proc);
  loop_->waiter = gensio_os_funcs_alloc_waiter(loop_->o);
  loop_->runner = gensio_os_funcs_alloc_runner(loop_->o, RunKicked, loop_.get());
}

// Connections still closing are left to the end of the process.
// Closes what is still open, waiting a little for the far ends, then frees gensio.
GensioSerialDriver::~GensioSerialDriver() {
  if (loop_->o == nullptr) return;
  if (loop_->thread.joinable()) {
    LetGo();
    std::unique_lock lock(loop_->m);
    loop_->linkGone.wait_for(lock, kCloseWait, [&] { return loop_->links == 0; });
    loop_->stopping = true;
    lock.unlock();
    gensio_os_funcs_wake(loop_->o, loop_->waiter);
    loop_->thread.join();
  }
  if (loop_->runner != nullptr) gensio_os_funcs_free_runner(loop_->o, loop_->runner);
  if (loop_->waiter != nullptr) gensio_os_funcs_free_waiter(loop_->o, loop_->waiter);
  if (loop_->proc != nullptr) gensio_os_proc_cleanup(loop_->proc);
  gensio_os_funcs_free(loop_->o);
}

std::unique_ptr<SerialDevice> GensioSerialDriver::Open(const tarn::SerialPort& port,
                                                       std::string& why) {
  const NetworkPort net = ParseNetworkPort(port.path);
  if (!net.error.empty()) {
    why = net.error;
    return nullptr;
  }
  if (loop_->waiter == nullptr || loop_->runner == nullptr) {
    why = "gensio could not start";
    return nullptr;
  }
  loop_->Start();
  if (std::shared_ptr<Link> again = loop_->Unpark(port.path))
    return std::make_unique<GensioDevice>(std::move(again), port.path);
  auto link = std::make_shared<Link>(*loop_);
  std::thread([link, spec = net.gensio, last = loop_->released.lock()] {
    Connect(link, spec, last);
  }).detach();
  // The deadline is kept apart from the opening thread, which a name lookup may hold for longer.
  std::thread([link] {
    std::unique_lock lock(link->m);
    const bool settled = link->changed.wait_for(lock, kOpenTimeout, [&] {
      return link->state != Link::State::Connecting || link->released;
    });
    lock.unlock();
    if (settled) return;
    Fail(*link, Link::State::Failed,
         "no connection within " + std::to_string(kOpenTimeout.count() / 1000) + " s");
    link->loop.Kick(link);
  }).detach();
  return std::make_unique<GensioDevice>(std::move(link), port.path);
}

void GensioSerialDriver::LetGo() {
  loop_->Release(loop_->Park(nullptr, {}));
}

std::unique_ptr<SerialDevice> LineDriver::Open(const tarn::SerialPort& port, std::string& why) {
  if (ParseNetworkPort(port.path).network) return network_.Open(port, why);
  network_.LetGo();
  return local_.Open(port, why);
}

}  // namespace tarn

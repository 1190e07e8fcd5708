// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GensioSerial.h"

#include <gensio/gensio.h>
#include <poll.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/GensioLink.h"
#include "platform/NetworkPort.h"

namespace tarn {

namespace {

void LogGensio(gensio_os_funcs*, gensio_log_levels level, const char* log, va_list args) {
  if (level > GENSIO_LOG_WARNING) return;
  std::fputs("gensio: ", stderr);
  std::vfprintf(stderr, log, args);
  std::fputc('\n', stderr);
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

GensioSerialDriver::GensioSerialDriver() : loop_(std::make_unique<Loop>()) {
  if (gensio_default_os_hnd(GENSIO_DEF_WAKE_SIG, &loop_->o) != 0) return;
  gensio_os_funcs_set_vlog(loop_->o, LogGensio);
  gensio_os_proc_setup(loop_->o, &loop_->proc);
  loop_->waiter = gensio_os_funcs_alloc_waiter(loop_->o);
  loop_->runner = gensio_os_funcs_alloc_runner(loop_->o, RunKicked, loop_.get());
}

// Closes what is still open, waiting a little for the far ends, then frees gensio; connections
// still closing after that are left to the end of the process.
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
  std::thread([link, gensioString = net.gensio, last = loop_->released.lock()] {
    Connect(link, gensioString, last);
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

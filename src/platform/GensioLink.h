// SPDX-License-Identifier: GPL-3.0-or-later
// Inside the gensio backend: the connection and gensio's event loop, which its gensio callbacks
// (GensioLink.cpp) and the device and driver (GensioSerial.cpp) share.
#pragma once

#include <gensio/gensio.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/GensioSerial.h"

namespace tarn {

// As on a local line: what the far end has not taken beyond this is dropped, a frame at a time.
inline constexpr std::size_t kMaxPendingOut = 64 * 1024;
// How long a new connection waits for the one let go before it to close.
inline constexpr std::chrono::milliseconds kCloseWait{1000};

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

void Fail(Link& link, Link::State state, std::string why);
void Connect(const std::shared_ptr<Link>& link, const std::string& gensioString,
             const std::shared_ptr<Link>& last);
void RunKicked(gensio_runner*, void* data);

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The outside world as the window's logic sees it: the machine's serial ports, the log, the
// message box and the file chooser. The program and the tests each give their own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Text.h"

namespace tarn {

// One serial port of System.SerialPort(i): the name shown in the popup and the device path.
struct SerialPort {
  std::string Name;
  std::string path;
};

class PortCatalog {
 public:
  virtual ~PortCatalog() = default;
  virtual i64 Count() = 0;
  virtual SerialPort At(i64 index) = 0;  // an index outside the list gives an empty port
  // Looks for ports that have appeared since and adds them at the end. A port keeps its index for
  // as long as the program runs, also once it has gone, so a row chosen is still its port.
  virtual void Rescan() {}
};

// A list that changes only through Ports(): what a test gives the window, and the base of the
// program's own list, GrowingPortCatalog.
class FixedPortCatalog : public PortCatalog {
 public:
  explicit FixedPortCatalog(std::vector<SerialPort> ports = {}) : ports_(std::move(ports)) {}
  i64 Count() override { return static_cast<i64>(ports_.size()); }
  SerialPort At(i64 index) override;
  std::vector<SerialPort>& Ports() { return ports_; }

 private:
  std::vector<SerialPort> ports_;
};

// Appends each of `found` that `ports` does not hold yet, in order. Two entries are the same port
// when their paths are the same file: a link such as /dev/serial/by-id/... and its device are one.
void AppendNewPorts(std::vector<SerialPort>& ports, const std::vector<SerialPort>& found);

// The program's list: the ports it starts with, then those that `look` finds later, at the end.
class GrowingPortCatalog : public FixedPortCatalog {
 public:
  using Lister = std::function<std::vector<SerialPort>()>;
  explicit GrowingPortCatalog(Lister look) : look_(std::move(look)) {}
  void Rescan() override { AppendNewPorts(Ports(), look_()); }

 private:
  Lister look_;
};

// System.DebugLog: must return at once and never fail.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void DebugLog(std::string_view text) = 0;
};

// MsgBox: the transport reports; the window decides how to show it.
// ShowStatus: a state that lasts, such as a port that went away, kept in view until the next
// status replaces it; empty text clears it. A box per event would be noise for such a state.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  virtual void MsgBox(std::string_view text) = 0;
  virtual void ShowStatus(std::string_view text) = 0;
};

// GetOpenFolderItem: the path of the file the user chose, or nothing when cancelled.
class FileChooser {
 public:
  virtual ~FileChooser() = default;
  virtual std::optional<std::string> GetOpenFolderItem(std::string_view filterType) = 0;
};

// Writes to the standard error stream, one line per call.
class StderrLog : public LogSink {
 public:
  void DebugLog(std::string_view text) override;
};

}  // namespace tarn

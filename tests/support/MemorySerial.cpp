// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MemorySerial.h"

namespace tarn::test {

namespace {

class MemoryDevice : public SerialDevice {
 public:
  explicit MemoryDevice(std::shared_ptr<MemoryLine> line) : line_(std::move(line)) {
    line_->open = true;
  }
  ~MemoryDevice() override { line_->open = false; }
  bool Configure(const LineSettings& s) override {
    line_->configured.push_back(s);
    return true;
  }
  void ReadAvailable(std::string& out) override {
    if (line_->lost) return;
    if (!line_->arrivals.empty()) {
      out += line_->arrivals.front();
      line_->arrivals.pop_front();
      return;
    }
    out += line_->incoming;
    line_->incoming.clear();
  }
  bool Write(std::string_view bytes) override {
    if (line_->lost) return false;
    line_->writes.emplace_back(bytes);
    if (line_->onWrite) line_->onWrite(*line_, line_->writes.back());
    return true;
  }
  bool WaitReadable(i64) override {
    return !line_->lost && (!line_->arrivals.empty() || !line_->incoming.empty());
  }
  bool Lost() const override { return line_->lost; }

 private:
  std::shared_ptr<MemoryLine> line_;
};

}  // namespace

std::string MemoryLine::AllWritten() const {
  std::string all;
  for (const auto& w : writes) all += w;
  return all;
}

MemoryLine& MemorySerialDriver::Line(const std::string& path) {
  auto& slot = lines_[path];
  if (!slot) slot = std::make_shared<MemoryLine>();
  return *slot;
}

std::unique_ptr<SerialDevice> MemorySerialDriver::Open(const SerialPort& port, std::string& why) {
  MemoryLine& line = Line(port.path);
  ++line.opens;
  if (port.path.empty() || line.refuseOpen) {
    why = "refused";
    return nullptr;
  }
  return std::make_unique<MemoryDevice>(lines_[port.path]);
}

}  // namespace tarn::test

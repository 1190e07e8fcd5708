// SPDX-License-Identifier: GPL-3.0-or-later
#include "diagnostics/CapturingSerial.h"

namespace tarn {

namespace {

class CapturingDevice : public SerialDevice {
 public:
  CapturingDevice(std::unique_ptr<SerialDevice> inner, tarn::SerialPort port, BusCapture& capture)
      : inner_(std::move(inner)), port_(std::move(port)), capture_(capture) {}
  ~CapturingDevice() override { capture_.LineClosed(); }

  // The settings are in force from here on, so the capture's interface starts here.
  bool Configure(const LineSettings& s) override {
    const bool done = inner_->Configure(s);
    capture_.LineSet(port_.path, "Serial Port " + port_.Name + " at " + std::to_string(s.baud) +
                                     " baud, " + std::to_string(s.dataBits) + s.parity +
                                     std::to_string(s.stopBits));
    return done;
  }
  void ReadAvailable(std::string& out) override {
    const std::size_t before = out.size();
    inner_->ReadAvailable(out);
    capture_.Read(std::string_view(out).substr(before));
  }
  // Bytes the line dropped never crossed it.
  bool Write(std::string_view bytes) override {
    const bool taken = inner_->Write(bytes);
    if (taken) capture_.Wrote(bytes);
    return taken;
  }
  bool WaitReadable(i64 maxMs) override { return inner_->WaitReadable(maxMs); }
  bool Lost() const override { return inner_->Lost(); }
  int Descriptor() const override { return inner_->Descriptor(); }
  bool HoldsOutput() const override { return inner_->HoldsOutput(); }
  void Readable() override {
    inner_->Readable();
    capture_.Readable();
  }
  bool GaveUp(std::string& why) override { return inner_->GaveUp(why); }
  std::string TakeNotice() override { return inner_->TakeNotice(); }

 private:
  std::unique_ptr<SerialDevice> inner_;
  tarn::SerialPort port_;
  BusCapture& capture_;
};

}  // namespace

std::unique_ptr<SerialDevice> CapturingDriver::Open(const tarn::SerialPort& port,
                                                    std::string& why) {
  std::unique_ptr<SerialDevice> device = inner_.Open(port, why);
  if (!device) return nullptr;
  return std::make_unique<CapturingDevice>(std::move(device), port, capture_);
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
// The receive path with everything on: CheckSerial into ParseByte, the monitor and DEBUG.TXT, with
// the input cut into reads at places the input itself chooses, and time passing between reads.
#include <filesystem>

#include "support/WindowHarness.h"

using namespace tarn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string folder = [] {
    auto dir = std::filesystem::temp_directory_path() / "tarnline-fuzz-receive";
    std::filesystem::create_directories(dir);
    return dir.string();
  }();
  test::WindowHarness h(1, folder);
  h.Start();
  h.w->ShowDataCheck.SetValue(true);
  h.w->DebugCheckBox.SetValue(true);
  std::size_t i = 0;
  while (i < size) {
    // One byte says how long the next read is and how much time passes after it.
    const std::uint8_t control = data[i++];
    const std::size_t length = std::min<std::size_t>(control & 0x3F, size - i);
    h.Line().incoming.assign(reinterpret_cast<const char*>(data + i), length);
    i += length;
    h.w->CheckSerial();
    if (control & 0x40) h.clock.AdvanceBy(control & 0x80 ? 1000 : 50);
    if (h.w->parseState < 0 || h.w->parseState > 5 || h.w->parseMsgLength < 0 ||
        h.w->parseMsgLength > 257 || h.w->serialBufHead < 0 || h.w->serialBufHead >= 10000) {
      __builtin_trap();
    }
  }
  std::filesystem::remove(folder + "/DEBUG.TXT");
  return 0;
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The scan list reader: any bytes as a file (binary, no line ends, a line of a megabyte, NUL
// bytes), played to a radio that answers every frame at once.
#include <cstdio>
#include <filesystem>

#include "support/WindowHarness.h"

using namespace tarn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path =
      (std::filesystem::temp_directory_path() / "tarnline-fuzz-scanlist.txt").string();
  if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  test::WindowHarness h;
  h.Start();
  h.chooser.next = path;
  std::size_t frames = 0;
  h.Line().onWrite = [&frames](test::MemoryLine& l, const std::string&) {
    ++frames;
    l.incoming += test::Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
  };
  h.w->FileScanList_Action();
  // Never more frames than lines: a line holds at least one byte or a line end.
  if (frames > size || h.w->ReqTimer.Mode() != 2) __builtin_trap();
  return 0;
}

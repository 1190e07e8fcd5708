// SPDX-License-Identifier: GPL-3.0-or-later
// The scan list reader: any bytes as a file (binary, no line ends, mixed line ends, NUL bytes),
// played to a radio that answers every frame at once. The file lives in memory.
#include <fcntl.h>

#include "FuzzWindow.h"

using namespace tarn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const test::TempFolder memory("/dev/shm");
  static const std::string path = memory.File("scanlist.txt");
  static const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  static test::FuzzWindow window;
  if (pwrite(file, data, size, 0) != static_cast<ssize_t>(size) || ftruncate(file, size) != 0)
    std::abort();
  window.Run([&](test::FuzzWindow& h) {
    h.chooser.next = path;
    std::size_t frames = 0;
    h.line.onWrite = [&frames](test::MemoryLine& l, const std::string&) {
      ++frames;
      l.incoming += test::Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
    };
    h.w->FileScanList_Action();
    h.line.onWrite = nullptr;
    // Never more frames than lines: a line holds at least one byte or a line end.
    if (frames > size || h.w->ReqTimer.Mode() != 2) __builtin_trap();
  });
  return 0;
}

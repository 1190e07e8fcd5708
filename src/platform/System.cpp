#include "platform/System.h"

#include <cstdio>

namespace tarn {

SerialPort FixedPortCatalog::At(i64 index) {
  if (index < 0 || index >= Count()) return {};
  return ports_[static_cast<std::size_t>(index)];
}

void StderrLog::DebugLog(std::string_view text) {
  // stderr is unbuffered: a short write that never waits on a reader.
  std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

}  // namespace tarn

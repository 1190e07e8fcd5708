// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/System.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace tarn {

SerialPort FixedPortCatalog::At(i64 index) {
  if (index < 0 || index >= Count()) return {};
  return ports_[static_cast<std::size_t>(index)];
}

namespace {

std::string SameFileKey(const std::string& path) {
  std::error_code error;
  const std::filesystem::path canonical = std::filesystem::canonical(path, error);
  return error ? path : canonical.string();
}

}  // namespace

void AppendNewPorts(std::vector<SerialPort>& ports, const std::vector<SerialPort>& found) {
  std::vector<std::string> keys;
  for (const SerialPort& port : ports) keys.push_back(SameFileKey(port.path));
  for (const SerialPort& port : found) {
    std::string key = SameFileKey(port.path);
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) continue;
    keys.push_back(std::move(key));
    ports.push_back(port);
  }
}

void StderrLog::DebugLog(std::string_view text) {
  // stderr is unbuffered: a short write that never waits on a reader.
  std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

}  // namespace tarn

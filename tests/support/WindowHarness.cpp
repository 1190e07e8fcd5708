// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WindowHarness.h"

#include <sstream>

namespace tarn::test {

std::string Bytes(std::initializer_list<int> values) {
  std::string s;
  for (int v : values) s.push_back(static_cast<char>(v));
  return s;
}

std::string Hex(const std::string& text) {
  std::istringstream in(text);
  std::string out;
  for (int byte; in >> std::hex >> byte;) out.push_back(static_cast<char>(byte));
  return out;
}

WindowHarness::WindowHarness(int portCount, std::string folder) : workFolder(std::move(folder)) {
  for (int i = 0; i < portCount; ++i) {
    ports.Ports().push_back({"port" + std::to_string(i), "/mem/" + std::to_string(i)});
  }
}

void WindowHarness::BuildOnly() {
  w = std::make_unique<IcomWindow>(
      app, WindowServices{clock, ports, *lineDriver, log, messages, chooser, workFolder});
  w->Open();
}

void WindowHarness::Start() {
  BuildOnly();
  w->init();
}

void WindowHarness::Parse(const std::string& bytes) {
  for (char c : bytes) w->ParseByte(static_cast<unsigned char>(c));
}

}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// Test doubles of the log and the message sink that keep everything they are told.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/System.h"

namespace tarn::test {

// Keeps every message.
class RecordingMessages : public MessageSink {
 public:
  void MsgBox(std::string_view text) override { shown.emplace_back(text); }
  void ShowStatus(std::string_view text) override { statuses.emplace_back(text); }
  std::string Status() const { return statuses.empty() ? std::string() : statuses.back(); }
  std::vector<std::string> shown;
  std::vector<std::string> statuses;
};

class RecordingLog : public LogSink {
 public:
  void DebugLog(std::string_view text) override { lines.emplace_back(text); }
  // How many lines read exactly `text`.
  int Count(std::string_view text) const {
    return static_cast<int>(std::count(lines.begin(), lines.end(), text));
  }
  std::vector<std::string> lines;
};

}  // namespace tarn::test

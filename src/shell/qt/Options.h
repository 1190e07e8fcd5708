// SPDX-License-Identifier: GPL-3.0-or-later
// The command line of tarnline.
#pragma once

#include <string>
#include <vector>

namespace tarn {

struct Options {
  std::vector<std::string> ports;  // --port, in the order given
  bool demo = false;
  bool help = false;
  bool version = false;
  bool printChanges = false;
  int statusAfterMs = -1;  // -1: never
  int quitAfterMs = -1;
  std::string screenshot;  // a PNG path; empty: none
  std::string capture;     // --capture: a pcapng file, "-" or a named pipe; empty: none
  // Choices made once start-up is done, as a user makes them; -1 or empty: left as they start.
  int baudRow = -1;     // --baud: the Baud Rate row of that speed
  std::string radioId;  // --radio-id, hex
  std::string ourId;    // --our-id, hex
  int bytesRow = -1;    // --bytes: row 0 is 4 bytes, row 1 is 5
};

struct ParsedOptions {
  Options options;
  std::string error;  // empty when the command line was good
};

// `args` without the program name. Each value option takes "--name VALUE" or "--name=VALUE".
ParsedOptions ParseOptions(const std::vector<std::string>& args);

// The --help text.
const char* Usage();

// The moment of the screenshot when --status-after does not give one.
inline constexpr int kDefaultScreenshotAfterMs = 3000;

}  // namespace tarn

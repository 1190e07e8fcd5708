// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/qt/Options.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace tarn {

namespace {

// A day: long enough for any scripted run, small enough for a QTimer's int milliseconds.
constexpr int kMaxMs = 86'400'000;

const char* const kUsage =
    R"(Usage: tarnline [options]

A test bench for the Icom CI-V bus: pick the serial port and speed, give the bus addresses, and
watch and set the radio's frequency, mode and filter.

  --port PATH          add a serial port the machine does not list (a pseudo-terminal such as
                       /dev/pts/7, a socat pair, a network serial port); repeatable. Ports given
                       here come first in Serial Port, in the order given, and the first one is
                       opened at start. The machine's own ports follow.
  --demo               start a simulated radio (address 08, 145.500 MHz, FM) inside the program on
                       a pseudo-terminal, put its port first and ask it once at start, so the
                       displays fill at once with no radio attached
  --status-after MS    after MS milliseconds print what the displays show, one line:
                       "Freq: X  Mode: Y  Filter: Z"
  --print-changes      print that line each time one of the three displays changes
  --screenshot PATH    save a PNG picture of the window when --status-after prints (after 3000 ms
                       when --status-after is not given)
  --quit-after MS      quit through File > Quit after MS milliseconds
  --capture FILE       record every byte read from and written to the port in FILE, a pcapng
                       capture for Wireshark: one record per CI-V frame, with its direction and
                       time, and bytes outside frames in records of their own. FILE may be - for
                       standard output (what the program prints then goes to standard error) or
                       a named pipe: tarnline --capture - | wireshark -k -i -
                       The CI-V dissector comes as a Lua plugin of Wireshark (civ.lua).
  --help               this text
  --version            print the version and quit

A real radio: connect its CI-V interface (USB ones show as ttyUSB0 or ttyACM0), start tarnline,
pick the port under Serial Port and the radio's CI-V speed under Baud Rate, and put the radio's
CI-V address in hex under Radio ID (an IC-706 is 48, an IC-7300 is 94). Our ID is the
controller's address (e0 is usual). Your user must be allowed to open the port (on Debian: the
dialout group). With no port at all the window opens and waits.

Qt's own settings go through the environment, e.g. QT_QPA_PLATFORM=offscreen to run without a
display. DEBUG.TXT (the Debug check box) is written to the current folder.

Ctrl+C in the terminal (SIGINT) and SIGTERM quit like File > Quit. Exit status: 0 after quitting,
1 when the demo radio cannot start, 2 for a bad command line or a capture file that cannot be
written.
)";

std::optional<int> ParseMs(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
  if (value < 0 || value > kMaxMs) return {};
  return value;
}

// Splits "--name=value"; `value` is empty and `inlineValue` false for a bare "--name".
struct Arg {
  std::string_view name;
  std::string_view value;
  bool inlineValue = false;
};

Arg Split(std::string_view arg) {
  const std::size_t eq = arg.find('=');
  if (eq == std::string_view::npos || arg.substr(0, 2) != "--") return {arg, {}, false};
  return {arg.substr(0, eq), arg.substr(eq + 1), true};
}

bool TakesValue(std::string_view name) {
  return name == "--port" || name == "--status-after" || name == "--quit-after" ||
         name == "--screenshot" || name == "--capture";
}

// A flag without a value; false when there is no such flag.
bool ApplyFlag(Options& o, std::string_view name) {
  if (name == "--help" || name == "-h") {
    o.help = true;
  } else if (name == "--version") {
    o.version = true;
  } else if (name == "--demo") {
    o.demo = true;
  } else if (name == "--print-changes") {
    o.printChanges = true;
  } else {
    return false;
  }
  return true;
}

// An option with its value; the error, or empty when the value was good.
std::string ApplyValue(Options& o, std::string_view name, std::string_view value) {
  // "--port --demo" is a forgotten path, not a port named "--demo".
  if (value.empty() || value.starts_with("--")) return std::string(name) + " needs a value";
  if (name == "--port") {
    o.ports.emplace_back(value);
  } else if (name == "--screenshot") {
    o.screenshot = std::string(value);
  } else if (name == "--capture") {
    o.capture = std::string(value);
  } else {
    const std::optional<int> ms = ParseMs(value);
    if (!ms) {
      return std::string(name) + " needs milliseconds from 0 to " + std::to_string(kMaxMs) +
             ", not '" + std::string(value) + "'";
    }
    (name == "--status-after" ? o.statusAfterMs : o.quitAfterMs) = *ms;
  }
  return {};
}

}  // namespace

const char* Usage() {
  return kUsage;
}

ParsedOptions ParseOptions(const std::vector<std::string>& args) {
  ParsedOptions out;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const Arg arg = Split(args[i]);
    if (TakesValue(arg.name)) {
      if (arg.inlineValue) {
        out.error = ApplyValue(out.options, arg.name, arg.value);
      } else if (i + 1 < args.size()) {
        out.error = ApplyValue(out.options, arg.name, args[++i]);
      } else {
        out.error = std::string(arg.name) + " needs a value";
      }
    } else if (!ApplyFlag(out.options, arg.name)) {
      out.error = "unknown option '" + args[i] + "'";
    } else if (arg.inlineValue) {
      out.error = std::string(arg.name) + " takes no value";
    }
    if (!out.error.empty()) return out;
  }
  return out;
}

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/qt/Options.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "platform/Serial.h"

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
                       opened at start. The machine's own ports follow. A port on another machine
                       (ser2net) is given as:
                         tcp://HOST:PORT      raw TCP (also socket://HOST:PORT)
                         rfc2217://HOST:PORT  telnet with RFC 2217: Baud Rate sets the far port
                         gensio:STRING        a gensio string as it stands, e.g. TLS:
                           gensio:telnet(rfc2217),ssl(CA=/path/ca.pem),tcp,HOST,PORT
                       HOST is a name, an IPv4 address or an IPv6 address in brackets.
  --baud N             choose the Baud Rate row of N baud once started: 300, 600, 1200, 1800,
                       2400, 3600, 4800, 7200, 9600, 14400, 19200, 28800, 38400 or 57600 (the rows
                       that read 1440 and 56700 run at 14400 and 57600)
  --radio-id HEX       put HEX (00 to ff) in Radio ID once started
  --our-id HEX         put HEX (00 to ff) in Our ID once started
  --bytes 4|5          choose 4 or 5 frequency bytes once started
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

// The choices of the window's controls: a speed of the Baud Rate rows, a bus address, a
// frequency length. The rows that read "1440" and "56700" run at 14400 and 57600 baud, and are
// chosen by those speeds.
bool IsChoice(std::string_view name) {
  return name == "--baud" || name == "--radio-id" || name == "--our-id" || name == "--bytes";
}

bool IsAddress(std::string_view hex) {
  return !hex.empty() && hex.size() <= 2 &&
         hex.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

std::string ApplyChoice(Options& o, std::string_view name, std::string_view value) {
  const std::string bad = std::string(name) + " cannot take '" + std::string(value) + "': ";
  if (name == "--radio-id" || name == "--our-id") {
    if (!IsAddress(value)) return bad + "a bus address is 1 or 2 hex digits (00 to ff)";
    (name == "--radio-id" ? o.radioId : o.ourId) = std::string(value);
  } else if (name == "--bytes") {
    if (value != "4" && value != "5") return bad + "4 or 5 frequency bytes";
    o.bytesRow = value == "4" ? 0 : 1;
  } else {
    std::string speeds;
    int found = -1;
    for (int row = 0; row < kBaudRows; ++row) {
      speeds += (row ? ", " : "") + std::to_string(BaudForCode(row));
      if (value == std::to_string(BaudForCode(row))) found = row;
    }
    if (found < 0) return bad + "a speed of the Baud Rate rows: " + speeds;
    o.baudRow = found;
  }
  return {};
}

bool TakesValue(std::string_view name) {
  return name == "--port" || name == "--status-after" || name == "--quit-after" ||
         name == "--screenshot" || name == "--capture" || IsChoice(name);
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
  if (IsChoice(name)) return ApplyChoice(o, name, value);
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

// SPDX-License-Identifier: GPL-3.0-or-later
// simradio: one or more simulated Icom radios on a pseudo-terminal (or a given serial device),
// for trying the program without a radio. Prints the line to open, then serves until interrupted.
#include <cctype>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simradio/SimRadio.h"

namespace {

using tarn::sim::BusOptions;
using tarn::sim::RadioState;

constexpr std::uint8_t kFirstRadioAddress = 0x01;
// E0 and up are controllers and the protocol's own codes.
constexpr std::uint8_t kLastRadioAddress = 0xDF;
constexpr int kMaxDelayMs = 60'000;
constexpr int kMaxNoiseBytes = 4096;
constexpr int kServeSliceMs = 100;

constexpr const char* kUsage =
    "Usage: simradio [options]\n"
    "\n"
    "Simulated Icom radios on a CI-V bus. Opens a pseudo-terminal, prints the path the program\n"
    "should open on its own line, and serves until SIGINT or SIGTERM.\n"
    "\n"
    "  --device PATH     serve a real serial device (9600 8N1) instead of a pseudo-terminal\n"
    "  --radio ADDR[,MHZ[,MODE[,FILTER]]]\n"
    "                    a radio at hex address ADDR (8, 0x94 or 94), tuned to MHZ (145.5),\n"
    "                    in MODE (LSB USB AM CW RTTY FM WFM CW-R RTTY-R S-AM, or its hex code)\n"
    "                    with FILTER 1..3; repeatable. Default: one radio 0x08,145.5,FM,1\n"
    "  --four-byte       answer frequency reads with 4 data bytes instead of 5\n"
    "  --no-echo         do not hand the controller's bytes back to it\n"
    "  --delay MS        wait MS milliseconds before every reply\n"
    "  --jam             put a jam code (FC) in the middle of every reply\n"
    "  --noise N         put N random bytes on the line after every reply\n"
    "  --silent          never reply (the echo still works)\n"
    "  --seed N          seed of the noise\n"
    "  --help            this text\n"
    "  --version         print the version and quit\n";

struct Config {
  std::string device;
  std::vector<RadioState> radios;
  BusOptions bus;
  bool fourByte = false;
  bool help = false;
  bool version = false;
};

struct ModeName {
  std::string_view name;
  std::uint8_t code;
};
constexpr ModeName kModes[] = {{"LSB", 0x00},    {"USB", 0x01}, {"AM", 0x02},  {"CW", 0x03},
                               {"RTTY", 0x04},   {"FM", 0x05},  {"WFM", 0x06}, {"CW-R", 0x07},
                               {"RTTY-R", 0x08}, {"S-AM", 0x0B}};

[[noreturn]] void Fail(const std::string& message) {
  throw std::invalid_argument(message);
}

long long ParseInteger(std::string_view text, long long min, long long max, const char* what) {
  long long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
    Fail(std::string(what) + " is not a number: '" + std::string(text) + "'");
  }
  if (value < min || value > max) {
    Fail(std::string(what) + " must be between " + std::to_string(min) + " and " +
         std::to_string(max));
  }
  return value;
}

bool TryHexByte(std::string_view text, std::uint8_t& byte) {
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.empty() || text.size() > 2 || error != std::errc() || end != text.data() + text.size()) {
    return false;
  }
  byte = static_cast<std::uint8_t>(value);
  return true;
}

std::uint8_t ParseHexByte(std::string_view text, const char* what) {
  std::uint8_t byte = 0;
  if (!TryHexByte(text, byte))
    Fail(std::string(what) + " is not a hex byte: '" + std::string(text) + "'");
  return byte;
}

// Megahertz with up to six decimals, read exactly (no floating point, so 14.07 is 14070000 Hz).
std::uint64_t ParseMegahertz(std::string_view text) {
  const auto dot = text.find('.');
  std::string_view whole = text.substr(0, dot);
  std::string fraction(dot == std::string_view::npos ? "" : text.substr(dot + 1));
  if (whole.empty() || fraction.size() > 6) Fail("bad frequency '" + std::string(text) + "'");
  fraction.resize(6, '0');
  const RadioState limits;
  const auto mhz = ParseInteger(whole, 0, 9999, "the frequency in MHz");
  const auto hz = ParseInteger(fraction, 0, 999'999, "the frequency's decimals");
  const auto total = static_cast<std::uint64_t>(mhz) * 1'000'000 + static_cast<std::uint64_t>(hz);
  if (total < limits.minFrequencyHz || total > limits.maxFrequencyHz) {
    Fail("frequency " + std::string(text) + " MHz is outside what the radio tunes");
  }
  return total;
}

std::uint8_t ParseMode(std::string_view text) {
  for (const ModeName& mode : kModes) {
    if (mode.name.size() != text.size()) continue;
    bool same = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
      same = same && std::toupper(static_cast<unsigned char>(text[i])) == mode.name[i];
    }
    if (same) return mode.code;
  }
  std::uint8_t code = 0;
  if (!TryHexByte(text, code) || !tarn::sim::IsKnownMode(code)) {
    Fail("unknown mode '" + std::string(text) + "'");
  }
  return code;
}

RadioState ParseRadio(std::string_view text) {
  std::vector<std::string_view> parts;
  for (std::size_t start = 0;;) {
    const auto comma = text.find(',', start);
    parts.push_back(text.substr(start, comma - start));
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  if (parts.size() > 4) Fail("--radio takes ADDR[,MHZ[,MODE[,FILTER]]]");
  RadioState radio;
  radio.address = ParseHexByte(parts[0], "the radio address");
  if (radio.address < kFirstRadioAddress || radio.address > kLastRadioAddress) {
    Fail("a radio address must be between 01 and DF");
  }
  if (parts.size() > 1) radio.frequencyHz = ParseMegahertz(parts[1]);
  if (parts.size() > 2) radio.mode = ParseMode(parts[2]);
  if (parts.size() > 3) {
    radio.filter = static_cast<std::uint8_t>(ParseInteger(parts[3], 1, 3, "the filter"));
  }
  return radio;
}

void AddRadio(Config& config, const RadioState& radio) {
  for (const RadioState& other : config.radios) {
    if (other.address == radio.address) Fail("two radios at the same address");
  }
  config.radios.push_back(radio);
}

// Options take their value as the next argument or after '=' (--delay 50, --delay=50).
void ParseOption(Config& config, std::string_view name, const std::function<std::string()>& value) {
  if (name == "--help")
    config.help = true;
  else if (name == "--version")
    config.version = true;
  else if (name == "--device")
    config.device = value();
  else if (name == "--radio")
    AddRadio(config, ParseRadio(value()));
  else if (name == "--four-byte")
    config.fourByte = true;
  else if (name == "--no-echo")
    config.bus.echo = false;
  else if (name == "--delay")
    config.bus.replyDelayMs = static_cast<int>(ParseInteger(value(), 0, kMaxDelayMs, "--delay"));
  else if (name == "--jam")
    config.bus.jamInReplies = true;
  else if (name == "--noise")
    config.bus.noiseBytes = static_cast<int>(ParseInteger(value(), 0, kMaxNoiseBytes, "--noise"));
  else if (name == "--silent")
    config.bus.silent = true;
  else if (name == "--seed")
    config.bus.seed = static_cast<std::uint32_t>(ParseInteger(value(), 0, 0xFFFF'FFFF, "--seed"));
  else
    Fail("unknown option '" + std::string(name) + "'");
}

Config ParseArguments(int argc, char** argv) {
  Config config;
  for (int i = 1; i < argc; ++i) {
    std::string_view arg = argv[i];
    const auto equals = arg.find('=');
    const std::string_view name = arg.substr(0, equals);
    bool valueUsed = false;
    auto value = [&]() -> std::string {
      valueUsed = true;
      if (equals != std::string_view::npos) return std::string(arg.substr(equals + 1));
      if (i + 1 >= argc) Fail(std::string(name) + " needs a value");
      return argv[++i];
    };
    ParseOption(config, name, value);
    if (equals != std::string_view::npos && !valueUsed) {
      Fail(std::string(name) + " takes no value");
    }
  }
  if (config.radios.empty()) config.radios.push_back(RadioState{});
  for (RadioState& radio : config.radios) radio.fiveByteFrequency = !config.fourByte;
  return config;
}

volatile std::sig_atomic_t gStop = 0;

void OnSignal(int) {
  gStop = 1;
}

void InstallSignals() {
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  // No SA_RESTART: the signal cuts the wait short, so the loop notices it at once.
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void Describe(const Config& config) {
  for (const RadioState& radio : config.radios) {
    std::fprintf(stderr, "simradio: radio %02X at %llu Hz, mode %02X, filter %u\n", radio.address,
                 static_cast<unsigned long long>(radio.frequencyHz), radio.mode, radio.filter);
    if (!radio.fiveByteFrequency && radio.frequencyHz >= 100'000'000) {
      std::fprintf(stderr, "simradio: note: 4-byte answers drop the 100 MHz digit of %02X\n",
                   radio.address);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  Config config;
  try {
    config = ParseArguments(argc, argv);
  } catch (const std::invalid_argument& error) {
    std::cerr << "simradio: " << error.what() << "\n(simradio --help lists the options)\n";
    return 2;
  }
  if (config.help) {
    std::cout << kUsage;
    return 0;
  }
  if (config.version) {
    std::cout << "simradio " << TARNLINE_VERSION << "\n";
    return 0;
  }
  std::string why;
  auto radio = config.device.empty()
                   ? tarn::sim::PtyRadio::OpenPty(config.bus, why)
                   : tarn::sim::PtyRadio::OpenDevice(config.device, config.bus, why);
  if (!radio) {
    std::cerr << "simradio: " << why << "\n";
    return 1;
  }
  radio->WithBus([&](tarn::sim::SimBus& bus) {
    for (const RadioState& state : config.radios) bus.AddRadio(state);
  });
  InstallSignals();
  Describe(config);
  std::cout << radio->SlavePath() << std::endl;
  while (!gStop) radio->ServeOnce(kServeSliceMs);
  return 0;
}

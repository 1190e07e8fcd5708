// The simulated radio stands in for real hardware in other tests, so its bytes are checked here
// against the protocol, not against the program's receiver.
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "simradio/SimRadio.h"

namespace tarn::sim {
namespace {

// "FE FE E0" to the bytes it names.
std::string Hex(const std::string& text) {
  std::istringstream in(text);
  std::string out;
  for (int byte; in >> std::hex >> byte;) out.push_back(static_cast<char>(byte));
  return out;
}

// Every byte on the line comes back to its sender, garbage and frames for nobody included, ahead
// of the reply. A jam byte drops the frame in hand; extra preamble bytes do not.
TEST(SimBus, EchoesEveryByteAheadOfTheReply) {
  SimBus bus;
  bus.AddRadio(RadioState{});
  const std::string in = Hex("01 FE FE 08 FC FE FE 42 E0 03 FD FE FE FE 08 E0 04 FD");
  bus.Receive(in, 0);
  EXPECT_EQ(bus.TakeDue(0), in + Hex("FE FE E0 08 04 05 01 FD"));
}

std::string Frame(int to, int from, const std::string& body) {
  return Hex("FE FE") + static_cast<char>(to) + static_cast<char>(from) + Hex(body + " FD");
}

// Two radios and no echo: 08 answers frequencies in five bytes, 94 in four. Each row sends a
// request from E1 to a fresh bus, then reads the frequency and the mode back.
TEST(SimBus, AnswersAsARadioDoes) {
  const std::tuple<int, const char*, const char*, const char*, const char*> cases[] = {
      {0x08, "05 00 70 07 07 00", "FB", "00 70 07 07 00", "05 01"},
      {0x94, "05 50 34 12 07", "FB", "50 34 12 07", "05 01"},
      {0x94, "06 03 02", "FB", "00 00 10 07", "03 02"},
      {0x08, "06 0B 00", "FB", "00 00 50 45 01", "0B 01"},
      {0x08, "05 0A 00 25 14 00", "FA", "00 00 50 45 01", "05 01"},
      {0x08, "05 00 00 00 00 20", "FA", "00 00 50 45 01", "05 01"},
      {0x94, "05 00 25 14", "FA", "00 00 10 07", "05 01"},
      {0x08, "06 09 01", "FA", "00 00 50 45 01", "05 01"},
      {0x08, "06 01 04", "FA", "00 00 50 45 01", "05 01"},
      {0x08, "07", "FA", "00 00 50 45 01", "05 01"},
  };
  for (auto [radio, request, answer, frequency, mode] : cases) {
    BusOptions options;
    options.echo = false;
    SimBus bus(options);
    bus.AddRadio(RadioState{});
    bus.AddRadio(RadioState{.address = 0x94, .frequencyHz = 7'100'000, .fiveByteFrequency = false});
    bus.Receive(Frame(radio, 0xE1, request) + Frame(radio, 0xE1, "03") + Frame(radio, 0xE1, "04"),
                0);
    EXPECT_EQ(bus.TakeDue(0), Frame(0xE1, radio, answer) +
                                  Frame(0xE1, radio, "03 " + std::string(frequency)) +
                                  Frame(0xE1, radio, "04 " + std::string(mode)))
        << request;
  }
}

}  // namespace
}  // namespace tarn::sim

// SPDX-License-Identifier: GPL-3.0-or-later
// The simulated radio stands in for real hardware in other tests, so its bytes are checked here
// against the protocol, not against the program's receiver.
#include <gtest/gtest.h>

#include "simradio/SimRadio.h"
#include "support/WindowHarness.h"

namespace tarn::sim {
namespace {

using test::Hex;

std::string Frame(const std::string& addressesAndBody) {
  return Hex("FE FE " + addressesAndBody + " FD");
}

// Two radios on one bus: 08 answers frequencies in five bytes, 94 in four. A controller at E1 talks
// to them in turn; every request comes back as the echo first, then the answer, if any. A refused
// request changes nothing, as the read after it shows.
TEST(SimBus, AnswersAsARadioDoes) {
  SimBus bus;
  bus.AddRadio(RadioState{});
  bus.AddRadio(RadioState{.address = 0x94, .frequencyHz = 7'100'000, .fiveByteFrequency = false});
  const std::pair<const char*, const char*> script[] = {
      {"08 E1 03", "E1 08 03 00 00 50 45 01"},
      {"94 E1 03", "E1 94 03 00 00 10 07"},
      {"42 E1 03", nullptr},
      {"08 E1 05 00 70 07 07 00", "E1 08 FB"},
      {"08 E1 05 0A 00 25 14 00", "E1 08 FA"},
      {"08 E1 03", "E1 08 03 00 70 07 07 00"},
      {"94 E1 05 50 34 12 07", "E1 94 FB"},
      {"94 E1 05 00 25 14", "E1 94 FA"},
      {"94 E1 03", "E1 94 03 50 34 12 07"},
      {"08 E1 06 03 02", "E1 08 FB"},
      {"08 E1 06 09 01", "E1 08 FA"},
      {"08 E1 04", "E1 08 04 03 02"},
      {"94 E1 06 0B 00", "E1 94 FB"},
      {"94 E1 07", "E1 94 FA"},
      {"94 E1 04", "E1 94 04 0B 01"},
  };
  for (auto [request, answer] : script) {
    bus.Receive(Frame(request), 0);
    EXPECT_EQ(bus.TakeDue(0), Frame(request) + (answer ? Frame(answer) : "")) << request;
  }
}

}  // namespace
}  // namespace tarn::sim

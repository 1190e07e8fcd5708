// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "platform/NetworkPort.h"

namespace tarn {
namespace {

// Each port name: what gensio opens for it, or the start of why it cannot be opened ("" and
// not network: a device path).
TEST(NetworkPort, NamesBecomeGensioStringsOrAreRefused) {
  const struct {
    const char* name;
    bool network;
    const char* gensio;
    const char* error;
  } cases[] = {
      {"/dev/ttyUSB0", false, "", ""},
      {"socket://shack:7000", true, "tcp,shack,7000", ""},
      {"rfc2217://[::1]:7000", true, "telnet(rfc2217),tcp,ipv6,::1,7000", ""},
      {"gensio:telnet(rfc2217),ssl,tcp,h,1", true, "telnet(rfc2217),ssl,tcp,h,1", ""},
      {"tcp://10.0.0.5", true, "", "no port number"},
      {"tcp://shack:65536", true, "", "the port must be"},
      {"tcp://::1:7000", true, "", "the host must be"},
  };
  for (const auto& c : cases) {
    const NetworkPort port = ParseNetworkPort(c.name);
    EXPECT_EQ(port.network, c.network) << c.name;
    EXPECT_EQ(port.gensio, c.gensio) << c.name;
    EXPECT_EQ(port.error.substr(0, std::string(c.error).size()), c.error) << c.name;
  }
}

}  // namespace
}  // namespace tarn

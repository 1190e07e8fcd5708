// SPDX-License-Identifier: GPL-3.0-or-later
// Port names that stand for a serial line on another machine, and the gensio string each opens:
//   tcp://HOST:PORT or socket://HOST:PORT: raw TCP, the bytes as they are
//   rfc2217://HOST:PORT: telnet with RFC 2217, which also carries the line settings
//   gensio:STRING: any gensio string, as it stands (TLS, SCTP...)
//
// HOST is a name, an IPv4 address or an IPv6 address in brackets; PORT is 1 to 65535.
#pragma once

#include <string>
#include <string_view>

namespace tarn {

struct NetworkPort {
  bool network = false;  // false: a device path
  std::string gensio;    // what to open, when the name is good
  std::string error;     // why a network name cannot be opened; empty when it can
};

NetworkPort ParseNetworkPort(std::string_view name);

}  // namespace tarn

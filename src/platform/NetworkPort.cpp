// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NetworkPort.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <utility>

namespace tarn {

namespace {

// Each scheme and the gensio stack that its address goes under.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kSchemes = {{
    {"tcp://", "tcp,"},
    {"socket://", "tcp,"},
    {"rfc2217://", "telnet(rfc2217),tcp,"},
}};

bool NameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-' || c == '_';
}

bool Ipv6Char(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0 || c == ':' || c == '.';
}

// "HOST:PORT" as gensio writes an address: "HOST,PORT", or "ipv6,ADDRESS,PORT".
std::string Address(std::string_view text, std::string& error) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) {
    error = "no port number after the host (HOST:PORT)";
    return {};
  }
  std::string_view host = text.substr(0, colon);
  const std::string_view port = text.substr(colon + 1);
  int number = 0;
  const auto [end, failed] = std::from_chars(port.data(), port.data() + port.size(), number);
  if (port.empty() || failed != std::errc() || end != port.data() + port.size() || number < 1 ||
      number > 65535) {
    error = "the port must be a number from 1 to 65535, not '" + std::string(port) + "'";
    return {};
  }
  std::string family;
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
    if (!std::all_of(host.begin(), host.end(), Ipv6Char)) host = {};
    family = "ipv6,";
  } else if (!std::all_of(host.begin(), host.end(), NameChar)) {
    host = {};  // an IPv6 address without brackets lands here too
  }
  if (host.empty()) {
    error = "the host must be a name, an IPv4 address or an IPv6 address in brackets";
    return {};
  }
  return family + std::string(host) + "," + std::string(port);
}

}  // namespace

NetworkPort ParseNetworkPort(std::string_view name) {
  NetworkPort out;
  if (name.starts_with("gensio:")) {
    out.network = true;
    out.gensio = name.substr(7);
    if (out.gensio.empty()) out.error = "an empty gensio string";
    return out;
  }
  for (const auto& [scheme, stack] : kSchemes) {
    if (!name.starts_with(scheme)) continue;
    out.network = true;
    const std::string address = Address(name.substr(scheme.size()), out.error);
    if (out.error.empty()) out.gensio = std::string(stack) + address;
    return out;
  }
  return out;
}

}  // namespace tarn

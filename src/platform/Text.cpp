// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Text.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace tarn {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Length of the decimal number at the start of `s` (no blanks), 0 when there is none.
std::size_t NumberLength(std::string_view s) {
  std::size_t i = 0;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
  std::size_t digits = 0;
  while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
  }
  if (digits == 0) return 0;
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
    std::size_t j = i + 1;
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
    std::size_t expDigits = 0;
    while (j < s.size() && IsDigit(s[j])) ++j, ++expDigits;
    if (expDigits > 0) i = j;
  }
  return i;
}

}  // namespace

double Val(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size() && (text[start] == ' ' || text[start] == '\t')) ++start;
  text.remove_prefix(start);
  const std::size_t n = NumberLength(text);
  if (n == 0) return 0.0;
  std::string_view number = text.substr(0, n);
  const bool negative = number.front() == '-';
  if (number.front() == '+' || number.front() == '-') number.remove_prefix(1);
  double value = 0.0;
  const auto [ptr, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
  (void)ptr;
  if (ec == std::errc::result_out_of_range) {
    // from_chars leaves the value alone here: tell overflow from underflow by the exponent sign.
    const auto e = number.find_first_of("eE");
    const bool tiny = e != std::string_view::npos && e + 1 < number.size() && number[e + 1] == '-';
    value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
  } else if (ec != std::errc()) {
    return 0.0;
  }
  return negative ? -value : value;
}

std::string Str(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
  if (value == 0.0) return "0";  // also -0
  char buf[64];
  const auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 15);
  return std::string(buf, result.ptr);
}

std::string Str(i64 value) {
  return std::to_string(value);
}

std::string ChrB(i64 value) {
  return std::string(1, static_cast<char>(static_cast<std::uint64_t>(value) & 0xFFu));
}

i64 AscB(std::string_view oneByte) {
  return oneByte.empty() ? 0 : static_cast<unsigned char>(oneByte.front());
}

i64 Len(std::string_view bytes) {
  return static_cast<i64>(bytes.size());
}

std::string Mid(std::string_view bytes, i64 start1, i64 length) {
  if (start1 < 1 || length <= 0 || start1 > Len(bytes)) return {};
  return std::string(
      bytes.substr(static_cast<std::size_t>(start1 - 1), static_cast<std::size_t>(length)));
}

std::string Left(std::string_view text, i64 count) {
  if (count <= 0) return {};
  return std::string(text.substr(0, static_cast<std::size_t>(count)));
}

std::string Right(std::string_view text, i64 count) {
  if (count <= 0) return {};
  const auto n = static_cast<std::size_t>(count);
  return std::string(n >= text.size() ? text : text.substr(text.size() - n));
}

std::string Uppercase(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return out;
}

i64 TruncToInt(double value) {
  if (std::isnan(value)) return 0;
  // 2^63 is exactly representable; anything at or beyond it does not fit.
  constexpr double kLimit = 9223372036854775808.0;
  if (value >= kLimit) return std::numeric_limits<i64>::max();
  if (value < -kLimit) return std::numeric_limits<i64>::min();
  return static_cast<i64>(value);
}

i64 Floor(double value) {
  return TruncToInt(std::floor(value));
}

void AppendHexText(std::string& out, unsigned char byte) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  out.push_back(kDigits[byte >> 4]);
  out.push_back(kDigits[byte & 0x0F]);
  out.push_back('_');
}

std::string HexText(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() * 3);
  for (char c : bytes) AppendHexText(out, static_cast<unsigned char>(c));
  return out;
}

i64 Utf8Length(std::string_view text) {
  i64 n = 0;
  for (char c : text) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
  }
  return n;
}

std::size_t Utf8Offset(std::string_view text, i64 charIndex) {
  if (charIndex <= 0) return 0;
  i64 seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
      if (seen == charIndex) return i;
      ++seen;
    }
  }
  return text.size();
}

}  // namespace tarn

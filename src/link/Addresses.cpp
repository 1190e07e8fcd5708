// SPDX-License-Identifier: GPL-3.0-or-later
// Bus addresses from the hexadecimal text of the address fields.
#include "link/IcomWindow.h"

namespace tarn {

// Runs at every frame end, so it works on views and allocates nothing.
i64 IcomWindow::FromHexDigit(std::string_view digit) {
  if (digit.size() == 1) {
    const char c = digit.front();
    if (c >= 'A' && c <= 'F') return 10 + (c - 'A');
    if (c >= 'a' && c <= 'f') return 10 + (c - 'a');
  }
  return TruncToInt(Val(digit));
}

// Only the first two characters count; one character is the low digit alone. Never fails: any
// other character counts as the digit Val makes of it. The field texts are UTF-8, so characters
// are counted as such: "é5" is 5, as the user sees a five in the low place.
i64 IcomWindow::FromHex(std::string_view text) {
  const std::string_view t = text.substr(0, Utf8Offset(text, 2));
  const i64 chars = Utf8Length(t);
  i64 value = 0;
  if (chars == 2) value = FromHexDigit(t.substr(0, Utf8Offset(t, 1))) << 4;
  return value + FromHexDigit(chars == 0 ? t : t.substr(Utf8Offset(t, chars - 1)));
}

}  // namespace tarn

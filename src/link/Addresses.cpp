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
// other character counts as the digit Val makes of it.
i64 IcomWindow::FromHex(std::string_view text) {
  const std::string_view t = text.substr(0, 2);
  i64 value = 0;
  if (t.size() == 2) value = FromHexDigit(t.substr(0, 1)) << 4;
  return value + FromHexDigit(t.empty() ? t : t.substr(t.size() - 1));
}

}  // namespace tarn

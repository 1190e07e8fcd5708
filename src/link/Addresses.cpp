// Bus addresses from the hexadecimal text of the address fields.
#include "link/IcomWindow.h"

namespace tarn {

i64 IcomWindow::FromHexDigit(std::string_view digit) {
  const std::string d = Uppercase(digit);
  static constexpr std::string_view kLetters[] = {"A", "B", "C", "D", "E", "F"};
  for (i64 i = 0; i < 6; ++i) {
    if (d == kLetters[i]) return 10 + i;
  }
  return TruncToInt(Val(d));
}

// Only the first two characters count; one character is the low digit alone. Never fails: any
// other character counts as the digit Val makes of it.
i64 IcomWindow::FromHex(std::string_view text) {
  const std::string t = Left(text, 2);
  i64 value = 0;
  if (Len(t) == 2) value = FromHexDigit(Left(t, 1)) << 4;
  return value + FromHexDigit(Right(t, 1));
}

}  // namespace tarn

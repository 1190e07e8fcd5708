// SPDX-License-Identifier: GPL-3.0-or-later
// Text and number helpers of the window's logic.
//
// Byte strings (frames, serial reads) are std::string with one char per byte; Len, Mid, AscB and
// ChrB count and build them byte by byte. Control texts are UTF-8; the EditField selection counts
// characters (see Utf8Length).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn {

using i64 = std::int64_t;

// The line end of control texts and of the line-end key: a single LF on every platform.
inline constexpr std::string_view EndOfLine = "\n";

// The decimal number at the start of a text: optional blanks, an optional sign, digits with an
// optional fraction and an optional exponent. A text without such a number gives 0. Overflow gives
// an infinity of the number's sign. Never reads the locale.
double Val(std::string_view text);

// A decimal text for a double with at most 15 significant digits, so that arithmetic noise such as
// 14249.999999999998 reads "14250". No exponent from 1e-4 up to 1e15, which covers every radio
// frequency; a value outside that range (only a garbled reply makes one) reads like "1e-05".
std::string Str(double value);
std::string Str(i64 value);
inline std::string Str(int value) {
  return Str(static_cast<i64>(value));
}

// One byte from an integer: the low eight bits of its two's complement. A value outside 0..255
// (an address of 256, a frequency pair of 100 or more) therefore still makes exactly one byte,
// so a frame never gains or loses a byte.
std::string ChrB(i64 value);
i64 AscB(std::string_view oneByte);  // 0..255; 0 for an empty text
i64 Len(std::string_view bytes);
std::string Mid(std::string_view bytes, i64 start1, i64 length);  // start counts from 1
std::string Left(std::string_view text, i64 count);
std::string Right(std::string_view text, i64 count);
std::string Uppercase(std::string_view text);  // ASCII letters only

// Double to integer without undefined behaviour: NaN gives 0, values beyond the 64-bit range give
// its nearest end.
i64 TruncToInt(double value);
i64 Floor(double value);

// Two upper-case hexadecimal digits and "_" per byte: FE_00_FD_.
std::string HexText(std::string_view bytes);
void AppendHexText(std::string& out, unsigned char byte);

// Characters (Unicode code points) in UTF-8 text, and the byte offset of a character index.
i64 Utf8Length(std::string_view text);
std::size_t Utf8Offset(std::string_view text, i64 charIndex);

}  // namespace tarn

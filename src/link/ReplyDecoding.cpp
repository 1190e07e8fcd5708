// SPDX-License-Identifier: GPL-3.0-or-later
// Decoding of the frames addressed to the controller: frequency and mode replies to the displays.
#include <array>
#include <utility>

#include "link/Civ.h"
#include "link/IcomWindow.h"

namespace tarn {

namespace {

constexpr std::array<std::pair<i64, const char*>, 10> kModeTexts = {{
    {0, "LSB"},
    {1, "USB"},
    {2, "AM"},
    {3, "CW"},
    {4, "RTTY"},
    {5, "FM"},
    {6, "FM-WIDE"},
    {7, "CW-REVERSE"},
    {8, "RTTY-REVERSE"},
    {11, "SYNC-AM"},  // decimal 11, byte 0x0B
}};

constexpr std::array<std::pair<i64, const char*>, 3> kFilterTexts = {{
    {1, "WIDE"},
    {2, "MEDIUM"},
    {3, "NARROW"},
}};

template <std::size_t N>
const char* TextFor(const std::array<std::pair<i64, const char*>, N>& table, i64 code) {
  for (const auto& [c, text] : table) {
    if (c == code) return text;
  }
  return nullptr;
}

}  // namespace

void IcomWindow::ParseMessage() {
  if (!pollRadios) {
    gotFreqReply = true;  // a search runs: any frame for us counts as an answer
    return;
  }
  if (parseCmd == civ::kCmdReadFreq) {
    UpdateFreq(ParseFreq());
  } else if (parseCmd == civ::kCmdReadMode) {
    const i64 v = ParseMode();
    UpdateMode(v & 255, TruncToInt(static_cast<double>(v) / 256.0));
  }
}

// One packed-decimal byte to its number; a digit above 9 is taken as it stands (0xFA gives 160).
i64 IcomWindow::ConvertBack(i64 value) {
  const i64 high = TruncToInt(static_cast<double>(value) / 16.0);
  const i64 low = value - high * 16;
  return high * 10 + low;
}

// The least significant byte comes first, so each later byte pushes the earlier ones two decimal
// places down; the true division by 100.0 matters for the last bit of the double.
double IcomWindow::ParseFreq() {
  double acc = 0.0;
  for (i64 i = 0; i < parseMsgLength; ++i) {
    acc = acc / 100.0 + static_cast<double>(ConvertBack(parseMsg[static_cast<std::size_t>(i)]));
  }
  return parseMsgLength == 4 ? acc * 1000.0 : acc * 100000.0;
}

i64 IcomWindow::ParseMode() {
  const i64 mode =
      parseMsg[0];  // whatever the length: an empty reply reads an earlier frame's byte
  const i64 filter = parseMsgLength > 1 ? parseMsg[1] : 0;
  return TruncToInt(256.0 * static_cast<double>(filter) + static_cast<double>(mode));
}

void IcomWindow::UpdateFreq(double frequency) {
  FreqDisplay.SetText(Str(frequency));
}

// An unknown code leaves its display as it was; the other display still follows its own code.
void IcomWindow::UpdateMode(i64 mode, i64 filter) {
  if (const char* text = TextFor(kModeTexts, mode)) ModeDisplay.SetText(text);
  if (const char* text = TextFor(kFilterTexts, filter)) FilterDisplay.SetText(text);
}

}  // namespace tarn

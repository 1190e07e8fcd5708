// SPDX-License-Identifier: GPL-3.0-or-later
// The four frames the program sends: FE FE radio controller command data... FD.
#include "link/Civ.h"
#include "link/IcomWindow.h"

namespace tarn {

namespace {

std::string FrameHead(i64 radio, i64 controller, i64 command) {
  return ChrB(civ::kPreamble) + ChrB(civ::kPreamble) + ChrB(radio) + ChrB(controller) +
         ChrB(command);
}

constexpr i64 kSsbRow = 10;
constexpr i64 kSyncAmRow = 9;
constexpr i64 kSyncAmCode = 11;  // 0x0B on the wire, not 9 and not 0x11
constexpr i64 kFmCode = 5;

}  // namespace

// A digit pair 0..99 as one packed-decimal byte. A pair of 100 or more (only the lowest pair can
// reach it) gives a high digit above 9, unchecked: 100 gives 0xA0.
std::string IcomWindow::Convert(i64 pair) {
  const i64 high = TruncToInt(static_cast<double>(pair) / 10.0);
  // Unsigned, so that a saturated pair from an absurd frequency wraps instead of overflowing.
  const auto low = static_cast<std::uint64_t>(pair) - static_cast<std::uint64_t>(high) * 10u;
  return ChrB(static_cast<i64>(static_cast<std::uint64_t>(high) * 16u + low));
}

void IcomWindow::ReqFreq(i64 radio) {
  SendSerialPacket(FrameHead(radio, FromHex(OurIDEditFieldHex.Text()), civ::kCmdReadFreq) +
                   ChrB(civ::kEnd));
}

void IcomWindow::ReqMode(i64 radio) {
  SendSerialPacket(FrameHead(radio, FromHex(OurIDEditFieldHex.Text()), civ::kCmdReadMode) +
                   ChrB(civ::kEnd));
}

// The frequency (MHz) is cut into five digit pairs in double precision, in exactly this order of
// operations: the rounding of each step decides whether the lowest pair reads 49 or 50 (145.0
// sends 49, 144.0 sends 50), and radios and captures expect these very bytes.
void IcomWindow::SetFreq(i64 radio, double frequency) {
  std::string frame = FrameHead(radio, FromHex(OurIDEditFieldHex.Text()), civ::kCmdSetFreq);
  double x = frequency / 1000.0;  // GHz
  x = x + 5e-8;                   // 50 Hz
  x = x * 10.0;                   // units of 100 MHz
  i64 p[5];
  for (int i = 0; i < 4; ++i) {
    p[i] = Floor(x);
    x = 100.0 * (x - static_cast<double>(p[i]));
  }
  p[4] = Floor(x);
  frame += Convert(p[4]);
  frame += Convert(p[3]);
  frame += Convert(p[2]);
  frame += Convert(p[1]);
  if (PopupFreqBytes.Text() == "5") frame += Convert(p[0]);
  frame += ChrB(civ::kEnd);
  SendSerialPacket(frame);
}

// Sends the pair that both popups show. The row SSB sends the code of FM with filter 0.
void IcomWindow::SetMode() {
  const i64 controller = FromHex(OurIDEditFieldHex.Text());
  const i64 radio = FromHex(EditRadioIDHex.Text());
  i64 filter = PopupFilter.ListIndex() + 1;
  const i64 row = PopupMode.ListIndex();
  i64 mode = 0;
  if (row >= 0 && row <= 8) {
    mode = row;
  } else if (row == kSyncAmRow) {
    mode = kSyncAmCode;
  } else if (row == kSsbRow) {
    mode = kFmCode;
    filter = 0;
  }
  SendSerialPacket(FrameHead(radio, controller, civ::kCmdSetMode) + ChrB(mode) + ChrB(filter) +
                   ChrB(civ::kEnd));
}

}  // namespace tarn

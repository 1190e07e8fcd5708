// SPDX-License-Identifier: GPL-3.0-or-later
// What a user can type into the address, rate and frequency fields, and Val and FromHex on any
// text: no crash, an address is always one byte, and whatever is queued is a whole frame.
#include <algorithm>

#include "FuzzWindow.h"

using namespace tarn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static test::FuzzWindow window;
  // Four texts separated by NUL bytes: our address, the radio's, the rate and the frequency.
  std::string texts[4];
  for (std::size_t i = 0, field = 0; i < size; ++i)
    data[i] == 0 && field < 3 ? void(++field) : texts[field].push_back(static_cast<char>(data[i]));
  window.Run([&](test::FuzzWindow& h) {
    for (const std::string& t : texts) {
      const i64 a = h.w->FromHex(t);
      if (a < 0 || a > 255) __builtin_trap();
      (void)Str(Val(t));
    }
    h.w->OurIDEditFieldHex.SetText(texts[0]);
    h.w->EditRadioIDHex.SetText(texts[1]);
    h.w->EditUpdateRate.SetText(texts[2]);
    h.w->EditFreq.SetText(texts[3]);
    h.w->PopupFreqBytes.SetListIndex(size % 2);
    h.w->kHzPopup.SetListIndex((size / 2) % 2);
    h.w->EditFreq.PressKey(EndOfLine);
    h.w->PopupMode.SetListIndex(static_cast<i64>(size % 11));
    // Two polls at the typed rate, a second at most between them; nothing comes back, so the
    // pump is stopped, as its ticks would read nothing.
    h.w->Timer1.SetMode(0);
    h.clock.AdvanceBy(2 * std::clamp<i64>(h.w->ReqTimer.Period(), 1, 1000) + 20);
    for (const std::string& w : h.line.writes)
      if (w.empty() || w.size() > 50) __builtin_trap();
  });
  return 0;
}

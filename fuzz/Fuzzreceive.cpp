// SPDX-License-Identifier: GPL-3.0-or-later
// The receive path, the input cut into reads at places it chooses and time passing between reads,
// against a decoder of its own written from the frame format alone: after every read the displays,
// the answer latch, the jam indicator and its one-shot timer, and the receiver's state must be what
// that decoder says the bytes meant.
#include <iostream>
#include <tuple>

#include "FuzzWindow.h"

using namespace tarn;

namespace {

struct Decoder {
  i64 state = 0, to = 0, cmd = 0, length = 0;
  std::array<int, 257> data{};  // never cleared: a short frame leaves the rest as it was
  std::string freq = "-", mode = "-", filter = "-";
  bool answer = false;
  i64 jamUntil = 0;  // the indicator shows until a second after the last jam byte

  void Byte(int b, i64 now) {
    if (b == 0xFC) jamUntil = now + 1000, state = 0;
    answer = answer || b == 0xFA || b == 0xFB;
    if (state < 2) {
      state = b == 0xFE ? state + 1 : 0;
    } else if (state < 5) {
      if (state == 2) to = b;
      if (state == 4) cmd = b, length = 0;
      ++state;
    } else if (b != 0xFD) {
      if (length < 257) data[length++] = b;
    } else {
      if (to == 0xE0) Decode();
      state = 0;
    }
  }

  void Decode() {
    static const char* const kModes[12] = {"LSB",          "USB", "AM",      "CW",
                                           "RTTY",         "FM",  "FM-WIDE", "CW-REVERSE",
                                           "RTTY-REVERSE", {},    {},        "SYNC-AM"};
    static const char* const kFilters[4] = {{}, "WIDE", "MEDIUM", "NARROW"};
    const int f = length > 1 ? data[1] : 0;
    if (cmd == 3) {
      double acc = 0;
      for (int i = 0; i < length; ++i) acc = acc / 100.0 + ((data[i] >> 4) * 10 + (data[i] & 15));
      char text[40];
      std::snprintf(text, sizeof text, "%.15g", acc * (length == 4 ? 1000.0 : 100000.0));
      freq = text;
    } else if (cmd == 4) {
      if (data[0] < 12 && kModes[data[0]]) mode = kModes[data[0]];
      if (f < 4 && kFilters[f]) filter = kFilters[f];
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const test::TempFolder memory("/dev/shm");  // DEBUG.TXT is written, not kept
  static test::FuzzWindow window(memory.Path());
  window.Run([&](test::FuzzWindow& h) {
    IcomWindow& w = *h.w;
    // The monitor on for one input in eight, DEBUG.TXT for one in 64: each read rescans the
    // monitor's text and opens the file.
    w.ShowDataCheck.SetValue(size % 8 == 1);
    w.DebugCheckBox.SetValue(size % 64 == 0);
    Decoder d;
    const i64 start = h.clock.NowMs();
    for (std::size_t i = 0; i < size;) {
      // One byte says how long the next read is and how much time passes after it.
      const std::uint8_t control = data[i++];
      const std::size_t length = std::min<std::size_t>(control & 0x3F, size - i);
      h.line.incoming.assign(reinterpret_cast<const char*>(data + i), length);
      for (std::size_t end = i + length; i < end; ++i) d.Byte(data[i], h.clock.NowMs() - start);
      w.CheckSerial();
      if (control & 0x40) {
        // The input says where reads fall and nothing is sent: the pump, the ring and the poll
        // would only tick on nothing.
        for (Timer* t : {&w.Timer1, &w.Timer2, &w.ReqTimer})
          if (t->Mode() != 0) t->SetMode(0);
        h.clock.AdvanceBy(control & 0x80 ? 1000 : 50);
      }
      const bool jam = h.clock.NowMs() - start < d.jamUntil;
      using Text = const std::string&;
      const std::tuple<Text, Text, Text, bool, bool, i64, i64, i64> shown{
          w.FreqDisplay.Text(), w.ModeDisplay.Text(),      w.FilterDisplay.Text(),
          w.gotAckNak,          w.StaticJamming.Visible(), w.JammerTimer.Mode(),
          w.parseState,         w.parseMsgLength};
      const decltype(shown) meant{d.freq, d.mode, d.filter, d.answer, jam, jam, d.state, d.length};
      if (shown == meant) continue;
      for (const auto* t : {&shown, &meant})
        std::apply([](const auto&... v) { ((std::cerr << v << ' '), ...) << '\n'; }, *t);
      std::abort();
    }
  });
  return 0;
}

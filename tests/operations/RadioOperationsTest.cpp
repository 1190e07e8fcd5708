// SPDX-License-Identifier: GPL-3.0-or-later
// The radio operations on the virtual clock: the frames that polling, the tuning controls, the
// radio search and a scan list run put on the in-memory line, and what they make of the answers.
#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Everything written to the line since the last call, as hex text.
std::string Sent(WindowHarness& h) {
  std::string all;
  for (const std::string& w : h.Line().writes) all += w;
  h.Line().writes.clear();
  return HexText(all);
}

TEST(StatusPolling, EachTickAsksTheNextQuestionAtTheRateAndAddressOfTheMoment) {
  WindowHarness h;
  h.Start();
  h.clock.AdvanceBy(1050);
  EXPECT_EQ(Sent(h), "FE_FE_08_E0_03_FD_");
  h.w->EditRadioIDHex.SetText("94");
  h.w->FindRadiosButton.SetEnabled(false);  // a search holds the question due for 9 ticks
  h.clock.AdvanceBy(9000);
  EXPECT_EQ(Sent(h), "");
  h.w->FindRadiosButton.SetEnabled(true);
  h.clock.AdvanceBy(2000);
  EXPECT_EQ(Sent(h), "FE_FE_94_E0_04_FD_FE_FE_94_E0_03_FD_");
  const std::pair<const char*, i64> periods[] = {{"2001", 1000}, {"3", 1},   {"", 0},
                                                 {"abc", 0},     {"-5", -2}, {"1e999", INT64_MAX},
                                                 {"500", 250},   {"1", 0}};
  for (const auto& [text, period] : periods) {
    h.w->EditUpdateRate.SetText(text);
    EXPECT_EQ(h.w->ReqTimer.Period(), period) << '"' << text << '"';
  }
  h.clock.AdvanceBy(60'000);  // a rate below 2 rests polling
  EXPECT_EQ(Sent(h), "");
  h.w->EditUpdateRate.SetText("400");
  h.clock.AdvanceBy(1000);
  EXPECT_EQ(h.Line().writes.size(), 5u);
}

// The address is read at each send, and a search does not hold a setting.
TEST(Tuning, EachControlSendsItsFrameAtOnce) {
  WindowHarness h;
  h.Start();
  h.w->ReqTimer.SetMode(0);
  h.w->FindRadiosButton.Push();
  struct Case {
    const char* text;
    i64 unitRow, bytesRow;
    const char* key;  // none: the Set button
    const char* sent;
  } cases[] = {
      {"7100", 0, 1, nullptr, "FE_FE_08_E0_05_49_00_10_07_00_FD_"},
      {"7.1", 1, 0, nullptr, "FE_FE_08_E0_05_49_00_10_07_FD_"},
      {"145.5 MHz", 1, 1, nullptr, "FE_FE_08_E0_05_49_00_50_45_01_FD_"},
      {"abc", 0, 0, nullptr, "FE_FE_08_E0_05_49_00_00_00_FD_"},
      {"14250", 0, 0, "\n", "FE_FE_08_E0_05_49_00_25_14_FD_"},
      {"14250", 0, 0, "\r", ""},
  };
  for (const Case& c : cases) {
    h.w->EditFreq.SetText(c.text);
    h.w->kHzPopup.SetListIndex(c.unitRow);
    h.w->PopupFreqBytes.SetListIndex(c.bytesRow);
    if (c.key) {
      EXPECT_FALSE(h.w->EditFreq.PressKey(c.key));  // every key goes on to the field
    } else {
      h.w->SetFreq1.Push();
    }
    h.clock.AdvanceBy(50);
    EXPECT_EQ(Sent(h), c.sent) << c.text << " key " << (c.key ? c.key : "none");
  }
  // Either popup sends the mode and the filter that both show; SSB goes as FM with filter 0.
  h.w->EditRadioIDHex.SetText("5a");
  h.w->SetFreq1.Push();
  h.w->PopupMode.SetListIndex(10);
  h.w->PopupFilter.SetListIndex(2);
  h.w->PopupMode.SetListIndex(9);
  h.w->PopupMode.SetListIndex(8);  // the last row sent as its own number
  h.clock.AdvanceBy(100);
  EXPECT_EQ(Sent(h),
            "FE_FE_5A_E0_05_49_00_25_14_FD_FE_FE_5A_E0_06_05_00_FD_FE_FE_5A_E0_06_05_00_FD_"
            "FE_FE_5A_E0_06_0B_03_FD_FE_FE_5A_E0_06_08_03_FD_");
}

// Radios at 0, 8 and 255 answer every frequency request to them, 136 with an FB. A frame that came
// in during the two idle ticks must not be credited to any address.
TEST(RadioDiscovery, ASearchAsksEveryAddressOncePerSecondAndReportsThoseThatAnswered) {
  WindowHarness h;
  h.Start();
  h.Line().onWrite = [](MemoryLine& l, const std::string& w) {
    const auto to = static_cast<unsigned char>(w[2]);
    if (w.size() == 6 && w[4] == 0x03 && (to == 0 || to == 8 || to == 255)) {
      l.incoming += Bytes({0xFE, 0xFE, 0xE0, to, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD});
    }
    if (to == 136) l.incoming += Bytes({0xFE, 0xFE, 0xE0, to, 0xFB, 0xFD});  // any frame counts
  };
  h.w->FindRadiosButton.Push();
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
  int ticks = 0;
  for (; h.w->FindRadiosTimer.Mode() == 2 && ticks < 300; ++ticks) {
    EXPECT_FALSE(h.w->FindRadiosButton.Enabled() || h.w->pollRadios) << ticks;
    if (ticks == 2) {
      EXPECT_EQ(h.w->StaticFindRadios.Text(), "-");  // no label while settling
    }
    h.clock.AdvanceBy(1000);
  }
  EXPECT_EQ(ticks, 259);
  std::string asked;  // 256 goes out as its low byte
  for (int a = 0; a <= 256; ++a) asked += Bytes({0xFE, 0xFE, a & 0xFF, 0xE0, 0x03, 0xFD});
  EXPECT_EQ(Sent(h), HexText(asked));
  EXPECT_EQ(h.w->EditField1.Text(),
            " Found radio at address 0\n Found radio at address 8\n"
            " Found radio at address 136\n Found radio at address 255\n");
  EXPECT_EQ(h.w->StaticFindRadios.Text(), "Looking for radio 256");
  EXPECT_EQ(h.w->FreqDisplay.Text(), "-");  // answers during the search went to the flag only
  h.clock.AdvanceBy(1000);  // polling asks again, and its answer reaches the display
  EXPECT_EQ(Sent(h), "FE_FE_08_E0_03_FD_");
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
}

// The MHz of each set-frequency frame written: its packed-decimal bytes as hex digits, the lowest
// pair (the Hz) first, read from the highest pair down to the 100 Hz.
std::vector<double> Played(const MemoryLine& line) {
  std::vector<double> mhz;
  for (const std::string& w : line.writes) {
    if (static_cast<unsigned char>(w[4]) != 0x05) continue;
    const std::string p = HexText(w.substr(5, 5));
    mhz.push_back(
        std::stod(p.substr(12, 2) + p.substr(9, 2) + "." + p.substr(6, 2) + p.substr(3, 2)));
  }
  return mhz;
}

// A frequency reply: a whole frame for us that holds no answer byte.
const std::string kFreqReply = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0, 0, 0x25, 0x14, 0, 0xFD});

// A scan list file, and a radio that answers the n-th set frame as answers[n] says, FB beyond its
// end: 'b' FB, 'a' FA, 'r' a frequency reply and FB in two reads, '.' nothing, 'x' the adapter is
// pulled as the frame goes out. No line may go before the answer to the last one was read. The
// radio address is edited as each line goes, and the next line must go to the new one.
struct ScanRun {
  ScanRun(const std::string& text, std::string answers) {
    h.Start();
    h.w->PopupFreqBytes.SetListIndex(1);
    dir.Write("list.txt", text);
    h.chooser.next = dir.File("list.txt");
    h.Line().onWrite = [this, answers, n = 0](MemoryLine& l, const std::string& w) mutable {
      if (static_cast<unsigned char>(w[4]) != 0x05) return;
      EXPECT_TRUE(l.arrivals.empty() && l.incoming.empty()) << "line " << n + 1 << " went early";
      EXPECT_EQ(static_cast<unsigned char>(w[2]), n == 0 ? 0x08 : 0x50 + n) << "line " << n + 1;
      const char a = n < static_cast<int>(answers.size()) ? answers[n] : 'b';
      h.w->EditRadioIDHex.SetText(Str(51 + n++));
      if (a == 'x') l.lost = true;
      if (a == 'r') l.arrivals = {kFreqReply, "\xFB"};
      if (a == 'a' || a == 'b') l.incoming += a == 'a' ? "\xFA" : "\xFB";
    };
  }
  TempFolder dir;
  WindowHarness h;
};

// The run starts at time 0. Frames queued before it leave first, one per 5 ms pass, and the bound
// of 2 s for an answer counts only once they have left.
TEST(ScanList, EveryLinePlaysInOrderUntilThreeInARowGoUnanswered) {
  struct Case {
    const char* file;
    const char* answers;
    int queued;
    std::vector<double> played;
    i64 took;
  } cases[] = {
      {"145.5\n7.1\n14.25\n", "", 0, {145.5, 7.1, 14.25}, 0},
      {"145.5\r\n7.1\r\n14.25", "", 0, {145.5, 7.1, 14.25}, 0},
      {"145.5 repeater\n\nabc\n", "", 0, {145.5, 0, 0}, 0},
      {"", "", 0, {}, 0},
      {"1\n5000\n3\n", "bab", 0, {1, 5000, 3}, 0},
      {"14.25\n7.1\n", "rr", 0, {14.25, 7.1}, 0},
      {"1\n2\n3\n4\n5\n", "", 1000, {1, 2, 3, 4, 5}, 5000},
      {"1\n2\n3\n4\n5\n6\n", "......", 0, {1, 2, 3}, 6000},
      {"1\n2\n3\n4\n5\n6\n7\n", "b.b.b.b", 0, {1, 2, 3, 4, 5, 6, 7}, 6000},
      {"1\n2\n3\n4\n5\n6\n", "bx", 0, {1, 2}, 6000},  // later writes are lost with the line
  };
  for (const Case& c : cases) {
    ScanRun run(c.file, c.answers);
    for (int i = 0; i < c.queued; ++i) run.h.w->ReqFreq(8);
    EXPECT_FALSE(run.h.w->FileScanList_Action()) << c.file;
    EXPECT_EQ(run.h.chooser.filters, std::vector<std::string>{"TEXT"});
    EXPECT_EQ(Played(run.h.Line()), c.played) << c.file;
    EXPECT_EQ(run.h.Line().writes.size(), c.queued + c.played.size()) << c.file;
    EXPECT_EQ(run.h.clock.NowMs(), c.took) << c.file;
    // Polling stood still for the run and asks again a full tick after it.
    const i64 head = run.h.w->serialBufHead;
    run.h.clock.AdvanceBy(990);
    EXPECT_EQ(run.h.w->serialBufHead, head) << c.file;
    run.h.clock.AdvanceBy(20);
    EXPECT_EQ(run.h.w->serialBufHead, head + 6) << c.file;
  }
}

TEST(ScanList, NoFileChosenOrNoneReadableEndsAtOnceAndLeavesPollingRunning) {
  ScanRun run("1\n", "");
  run.h.chooser.next.reset();
  EXPECT_TRUE(run.h.w->FileScanList_Action());
  run.h.chooser.next = run.dir.File("missing.txt");
  EXPECT_TRUE(run.h.w->FileScanList_Action());
  EXPECT_EQ(run.h.w->ReqTimer.Mode(), 2);
}

}  // namespace
}  // namespace tarn::test

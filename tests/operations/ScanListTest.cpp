#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// The MHz a set-frequency frame carries (five data bytes), read back digit by digit.
double FrameMHz(const std::string& w) {
  double hz = 0, scale = 1;
  for (std::size_t i = 5; i < w.size() - 1; ++i, scale *= 100) {
    const int b = static_cast<unsigned char>(w[i]);
    hz += ((b >> 4) * 10 + (b & 15)) * scale;
  }
  return std::floor(hz / 100.0) / 1e4;  // to 100 Hz: drops the 49 or 50 Hz every frame carries
}

class ScanList : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Start();
    h.w->PopupFreqBytes.SetListIndex(1);
    h.chooser.next = dir.File("list.txt");
  }
  // A radio that answers each set-frequency frame with FB, or FA for those above `limitMHz`.
  void Radio(double limitMHz = 1e9) {
    h.Line().onWrite = [limitMHz](MemoryLine& l, const std::string& w) {
      if (w.size() > 5 && static_cast<unsigned char>(w[4]) == 0x05) {
        l.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, FrameMHz(w) > limitMHz ? 0xFA : 0xFB, 0xFD});
      }
    };
  }
  std::vector<double> SetFrames() {
    std::vector<double> mhz;
    for (const auto& w : h.Line().writes) {
      if (static_cast<unsigned char>(w[4]) == 0x05) mhz.push_back(FrameMHz(w));
    }
    return mhz;
  }
  // Lines given up for want of an answer, as the log tells them.
  long Unanswered() {
    return std::count_if(h.log.lines.begin(), h.log.lines.end(), [](const std::string& l) {
      return l.rfind("scan list: no answer for", 0) == 0;
    });
  }
  TempFolder dir;
  WindowHarness h;
};

TEST_F(ScanList, EveryLineReachesTheRadioInOrderWhateverItsLineEnd) {
  Radio();
  for (const char* text : {"145.5\n7.1\n14.25\n", "145.5\r\n7.1\r\n14.25", "145.5\r7.1\r14.25\r"}) {
    h.Line().writes.clear();
    dir.Write("list.txt", text);
    EXPECT_FALSE(h.w->FileScanList_Action());
    EXPECT_EQ(SetFrames(), (std::vector<double>{145.5, 7.1, 14.25}));
    EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
  }
  EXPECT_EQ(h.chooser.filters.back(), "TEXT");
}

TEST_F(ScanList, ALineWithoutANumberPlaysAsZeroAndTrailingTextIsIgnored) {
  Radio();
  dir.Write("list.txt", "145.5 repeater\n\nabc\n");
  h.w->FileScanList_Action();
  EXPECT_EQ(SetFrames(), (std::vector<double>{145.5, 0.0, 0.0}));
}

TEST_F(ScanList, ARefusedLineGoesOnToTheNext) {
  Radio(1000.0);
  dir.Write("list.txt", "145.5\n5000\n7.1\n");
  h.w->FileScanList_Action();
  EXPECT_EQ(SetFrames(), (std::vector<double>{145.5, 5000.0, 7.1}));
}

TEST_F(ScanList, AnEmptyFileSendsNothing) {
  Radio();
  dir.Write("list.txt", "");
  h.w->ReqTimer.SetMode(0);
  EXPECT_FALSE(h.w->FileScanList_Action());
  EXPECT_TRUE(h.Line().writes.empty());
  EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
}

TEST_F(ScanList, ACancelledDialogOrAnUnreadableFileChangesNothing) {
  h.w->ReqTimer.SetMode(0);
  h.chooser.next.reset();
  EXPECT_TRUE(h.w->FileScanList_Action());
  h.chooser.next = dir.File("missing.txt");
  EXPECT_TRUE(h.w->FileScanList_Action());
  EXPECT_EQ(h.w->ReqTimer.Mode(), 0);
  EXPECT_TRUE(h.Line().writes.empty());
}

TEST_F(ScanList, ARadioThatNeverAnswersEndsTheRunWithinItsBound) {
  dir.Write("list.txt", "1\n2\n3\n4\n5\n6\n");
  const i64 start = h.clock.NowMs();
  EXPECT_FALSE(h.w->FileScanList_Action());
  const i64 took = h.clock.NowMs() - start;
  EXPECT_EQ(SetFrames(), (std::vector<double>{1, 2, 3}));  // three unanswered lines end the run
  EXPECT_GE(took, 6000);
  EXPECT_LE(took, 6100);
  EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
  h.clock.AdvanceBy(1050);
  EXPECT_EQ(static_cast<unsigned char>(h.Line().writes.back()[4]), 0x03);  // polling is back
}

TEST_F(ScanList, OneLostAnswerCostsOnlyItsLine) {
  int seen = 0;
  h.Line().onWrite = [&seen](MemoryLine& l, const std::string& w) {
    if (static_cast<unsigned char>(w[4]) == 0x05 && ++seen != 2) l.incoming += Bytes({0xFB});
  };
  dir.Write("list.txt", "1\n2\n3\n4\n");
  h.w->FileScanList_Action();
  EXPECT_EQ(SetFrames(), (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(ScanList, FramesAlreadyQueuedLeaveFirst) {
  Radio();
  h.w->ReqFreq(8);
  dir.Write("list.txt", "7.1\n");
  h.w->FileScanList_Action();
  ASSERT_EQ(h.Line().writes.size(), 2u);
  EXPECT_EQ(h.Line().writes[0], Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
}

// Each set frame is answered in two reads: a frequency reply, then FB. The reply has no answer
// byte, so it reaches the display but the next line waits for the FB.
TEST_F(ScanList, AFrequencyReplyDuringTheWaitReachesTheDisplayButDoesNotEndIt) {
  std::vector<std::size_t> unreadWhenSent;  // reads still to come as each set frame left
  h.Line().onWrite = [&unreadWhenSent](MemoryLine& l, const std::string& w) {
    if (static_cast<unsigned char>(w[4]) != 0x05) return;
    unreadWhenSent.push_back(l.arrivals.size());
    l.arrivals.push_back(Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x25, 0x14, 0x00, 0xFD}));
    l.arrivals.push_back(Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD}));
  };
  dir.Write("list.txt", "14.25\n7.1\n");
  h.w->FileScanList_Action();
  EXPECT_EQ(h.w->FreqDisplay.Text(), "14250");
  EXPECT_EQ(SetFrames(), (std::vector<double>{14.25, 7.1}));
  EXPECT_EQ(unreadWhenSent, (std::vector<std::size_t>{0, 0}));
  EXPECT_EQ(Unanswered(), 0);
}

TEST_F(ScanList, TheRadioAddressIsReadAnewForEachLine) {
  std::vector<int> sentTo;
  h.Line().onWrite = [this, &sentTo](MemoryLine& l, const std::string& w) {
    if (static_cast<unsigned char>(w[4]) != 0x05) return;
    sentTo.push_back(static_cast<unsigned char>(w[2]));
    h.w->EditRadioIDHex.SetText(sentTo.size() == 1 ? "58" : "5a");  // edited during the run
    l.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
  };
  dir.Write("list.txt", "1\n2\n3\n");
  h.w->FileScanList_Action();
  EXPECT_EQ(sentTo, (std::vector<int>{0x08, 0x58, 0x5A}));
}

TEST_F(ScanList, APortThatVanishesMidRunEndsItWithinItsBound) {
  int sent = 0;
  h.Line().onWrite = [&sent](MemoryLine& l, const std::string& w) {
    if (static_cast<unsigned char>(w[4]) != 0x05) return;
    if (++sent == 1) {
      l.incoming += Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD});
    } else {
      l.lost = true;  // the adapter is pulled as the second line goes out
    }
  };
  dir.Write("list.txt", "1\n2\n3\n4\n5\n6\n");
  const i64 start = h.clock.NowMs();
  EXPECT_FALSE(h.w->FileScanList_Action());
  const i64 took = h.clock.NowMs() - start;
  EXPECT_EQ(SetFrames(), (std::vector<double>{1, 2}));  // later writes are dropped by the line
  EXPECT_EQ(Unanswered(), 3);                           // lines 2 to 4; 5 and 6 are not played
  EXPECT_GE(took, 3 * 2000);
  EXPECT_LE(took, 3 * 2000 + 100);
  EXPECT_EQ(h.w->ReqTimer.Mode(), 2);
  EXPECT_EQ(h.messages.Status(),
            "Serial port port0 is gone: choose it again under Serial Port once it is back.");
  const i64 queued = h.w->serialBufHead;
  h.clock.AdvanceBy(3000);  // polling goes on, its frames leave the ring into the lost line
  EXPECT_NE(h.w->serialBufHead, queued);
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
}

// A thousand frames wait before the run, far more than leave within one answer bound. The bound is
// the radio's time to answer, so it counts only once they have left, and no line is given up.
TEST_F(ScanList, ABacklogInTheRingCostsNoLine) {
  Radio();
  for (int i = 0; i < 1000; ++i) h.w->ReqFreq(8);
  dir.Write("list.txt", "1\n2\n3\n4\n5\n");
  EXPECT_FALSE(h.w->FileScanList_Action());
  EXPECT_EQ(SetFrames(), (std::vector<double>{1, 2, 3, 4, 5}));
  EXPECT_EQ(h.Line().writes.size(), 1005u);
  EXPECT_EQ(Unanswered(), 0);
  EXPECT_EQ(h.w->serialBufHead, h.w->serialBufTail);
}

}  // namespace
}  // namespace tarn::test

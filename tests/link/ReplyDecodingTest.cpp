#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

std::string Reply(int command, std::initializer_list<int> data) {
  std::string f = Bytes({0xFE, 0xFE, 0xE0, 0x08, command});
  for (int d : data) f.push_back(static_cast<char>(d));
  return f + Bytes({0xFD});
}

TEST(ParseFreq, ExactToTheDouble) {
  struct Case {
    std::string data;
    double kHz;
  } cases[] = {
      {Bytes({0x00, 0x00, 0x50, 0x45, 0x01}), 145500.0},
      {Bytes({0x00, 0x00, 0x25, 0x14}), 14250.0},
      {Bytes({0x00, 0x00, 0x25, 0x14, 0x00}), 14249.999999999998},
      {Bytes({0x00, 0x00, 0x10, 0x96, 0x12}), 1296100.0},
      {Bytes({0x50, 0x00, 0x10, 0x96, 0x12}), 1296100.05},
      {"", 0.0},
      {Bytes({0x45}), 4500000.0},
      {Bytes({0xFF}), 16500000.0},
      {Bytes({0x00, 0x00, 0x00, 0x00, 0x00, 0x01}), 100000.0},
      {Bytes({0x00, 0x25, 0x14}), 1425000.0},
  };
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.Parse(Bytes({0xFE, 0xFE, 0x00, 0x08, 0x03}) + c.data + Bytes({0xFD}));
    EXPECT_EQ(h.w->ParseFreq(), c.kHz) << HexText(c.data);
  }
}

TEST(ConvertBack, TakesDigitsAboveNineAsTheyStand) {
  WindowHarness h;
  h.BuildOnly();
  const std::pair<i64, i64> cases[] = {{0x45, 45},  {0x0A, 10},  {0xA0, 100},
                                       {0xFA, 160}, {0xFF, 165}, {0, 0}};
  for (auto [in, out] : cases) EXPECT_EQ(h.w->ConvertBack(in), out) << in;
}

TEST(FrequencyReply, ShowsTheFrequencyInKilohertz) {
  struct Case {
    std::string frame;
    const char* shown;
  } cases[] = {
      {Reply(3, {0x00, 0x00, 0x50, 0x45, 0x01}), "145500"},
      {Reply(3, {0x00, 0x00, 0x25, 0x14, 0x00}), "14250"},
      {Reply(3, {0x50, 0x00, 0x10, 0x96, 0x12}), "1296100.05"},
      {Reply(3, {}), "0"},
  };
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.Parse(c.frame);
    EXPECT_EQ(h.w->FreqDisplay.Text(), c.shown);
  }
}

TEST(ModeReply, KnownCodesReachTheirDisplaysAndUnknownOnesLeaveThemAlone) {
  struct Case {
    std::string frame;
    const char* mode;
    const char* filter;
  } cases[] = {
      {Reply(4, {0x05, 0x02}), "FM", "MEDIUM"},
      {Reply(4, {0x01}), "USB", "-"},
      {Reply(4, {0x0B, 0x03}), "SYNC-AM", "NARROW"},
      {Reply(4, {0x11, 0x01}), "-", "WIDE"},
      {Reply(4, {0x09, 0x01}), "-", "WIDE"},
      {Reply(4, {0x0A, 0x02}), "-", "MEDIUM"},
      {Reply(4, {0x0C, 0x03}), "-", "NARROW"},
      {Reply(4, {0x08, 0x04}), "RTTY-REVERSE", "-"},
      {Reply(4, {0x07, 0x00}), "CW-REVERSE", "-"},
      {Reply(4, {0x00, 0x01, 0x99}), "LSB", "WIDE"},
      {Reply(4, {}), "LSB", "-"},  // no data: mode byte 0 left from creation
      {Reply(5, {0x01, 0x01}), "-", "-"},
      {Reply(0xFB, {}), "-", "-"},
  };
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.Parse(c.frame);
    EXPECT_EQ(h.w->ModeDisplay.Text(), c.mode) << HexText(c.frame);
    EXPECT_EQ(h.w->FilterDisplay.Text(), c.filter) << HexText(c.frame);
  }
}

TEST(ModeReply, EmptyReplyReadsTheModeByteAnEarlierFrameLeft) {
  WindowHarness h;
  h.Start();
  h.Parse(Reply(4, {0x03, 0x02}));
  h.w->ModeDisplay.SetText("-");
  h.Parse(Reply(4, {}));
  EXPECT_EQ(h.w->ModeDisplay.Text(), "CW");
}

TEST(ReplyDecoding, DuringASearchEveryFrameForUsOnlySetsTheFlag) {
  for (int command : {3, 4, 6, 0xFB, 0x19}) {
    WindowHarness h;
    h.Start();
    h.w->pollRadios = false;
    h.Parse(Reply(command, {0x00, 0x00, 0x50, 0x45, 0x01}));
    EXPECT_TRUE(h.w->gotFreqReply) << command;
    EXPECT_EQ(h.w->FreqDisplay.Text(), "-");
    EXPECT_EQ(h.w->ModeDisplay.Text(), "-");
  }
}

}  // namespace
}  // namespace tarn::test

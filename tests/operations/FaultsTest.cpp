// What a real bus does to polling: a radio that is silent, late, refuses, jams, or answers
// someone else. Polling goes on and the displays keep their last good value.
#include <gtest/gtest.h>

#include "support/SimLine.h"

namespace tarn::test {
namespace {

struct Fault {
  const char* name;
  void (*apply)(sim::SimBus&, IcomWindow&);
};

class PollingUnderFaults : public ::testing::TestWithParam<Fault> {};

TEST_P(PollingUnderFaults, GoesOnAndKeepsTheLastGoodValues) {
  WindowHarness h;
  h.Start();
  SimLine line(h, {});
  line.bus.AddRadio({});
  line.Run(5000);
  ASSERT_EQ(h.w->FreqDisplay.Text(), "145500");
  ASSERT_EQ(h.w->ModeDisplay.Text(), "FM");

  GetParam().apply(line.bus, *h.w);
  line.bus.Radio(0x08)->frequencyHz = 7'000'000;  // any answer that got through would show this
  const std::size_t before = h.Line().writes.size();
  line.Run(20'000);
  EXPECT_GE(h.Line().writes.size() - before, 19u) << "polling stopped";
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_EQ(h.w->ModeDisplay.Text(), "FM");
  EXPECT_EQ(h.w->FilterDisplay.Text(), "WIDE");
}

INSTANTIATE_TEST_SUITE_P(
    Faults, PollingUnderFaults,
    ::testing::Values(Fault{"Silent",
                            [](sim::SimBus& b, IcomWindow&) { b.Options().silent = true; }},
                      Fault{"JamsEveryReply",
                            [](sim::SimBus& b, IcomWindow&) { b.Options().jamInReplies = true; }},
                      Fault{"RadioAtAnotherAddress",
                            [](sim::SimBus&, IcomWindow& w) { w.EditRadioIDHex.SetText("58"); }}),
    [](const ::testing::TestParamInfo<Fault>& info) { return info.param.name; });

TEST(PollingUnderFaults, RepliesToAnotherControllerAreDropped) {
  WindowHarness h;
  h.Start();
  SimLine line(h, {});
  line.bus.AddRadio({});
  line.Run(3000);
  line.bus.Radio(0x08)->frequencyHz = 7'000'000;
  // Every reply now goes to E2, as on a bus with a second controller.
  line.Run(10'000, [](std::string bytes) {
    for (std::size_t i = 0; i + 2 < bytes.size(); ++i) {
      if (bytes.compare(i, 3, Bytes({0xFE, 0xFE, 0xE0})) == 0) bytes[i + 2] = '\xE2';
    }
    return bytes;
  });
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
}

TEST(PollingUnderFaults, LateAnswersStillReachTheDisplays) {
  WindowHarness h;
  h.Start();
  sim::BusOptions late;
  late.replyDelayMs = 1500;  // later than the next question
  SimLine line(h, late);
  line.bus.AddRadio({});
  line.Run(6000);
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_EQ(h.w->ModeDisplay.Text(), "FM");
}

TEST(PollingUnderFaults, ARefusedSettingChangesNothingOnScreen) {
  WindowHarness h;
  h.Start();
  SimLine line(h, {});
  line.bus.AddRadio({});
  line.Run(3000);
  h.w->PopupFreqBytes.SetListIndex(1);
  h.w->EditFreq.SetText("9999999");  // kHz: beyond the radio
  h.w->SetFreq1.Push();
  line.Run(3000);
  EXPECT_TRUE(h.w->gotAckNak);
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
}

TEST(TransmitRing, ARateOfOneMillisecondFillsItWithoutCorruptingAFrame) {
  WindowHarness h;
  h.Start();
  h.w->EditUpdateRate.SetText("2");  // a question every millisecond, ten times what the ring sends
  h.w->EditFreq.SetText("7100");
  h.clock.AdvanceBy(30'000);
  h.w->SetFreq1.Push();
  h.clock.AdvanceBy(5000);
  EXPECT_GT(h.w->RefusedFrames(), 0);
  for (const std::string& w : h.Line().writes) {
    ASSERT_EQ(w.size(), 6u);
    ASSERT_EQ(w.substr(0, 4), Bytes({0xFE, 0xFE, 0x08, 0xE0}));
    ASSERT_EQ(static_cast<unsigned char>(w[5]), 0xFD);
  }
}

// Every field holds the same text; the address in each frame is what the first two characters of
// that text make as hexadecimal digits, any other character counting as 0.
TEST(InputFields, AnyTextGivesTheBehaviourOfItsField) {
  struct Case {
    const char* text;
    int address;
  } cases[] = {
      {"", 0x00},   {"zz", 0x00},   {"-1", 0x01},       {"1e999", 0x1E}, {"\xC3\xA9\xC3\xA9", 0x00},
      {" 8", 0x08}, {"0x94", 0x00}, {"123456789", 0x12}};
  for (const auto& c : cases) {
    WindowHarness h;
    h.Start();
    h.w->OurIDEditFieldHex.SetText(c.text);
    h.w->EditRadioIDHex.SetText(c.text);
    h.w->EditUpdateRate.SetText(c.text);
    h.w->EditFreq.SetText(c.text);
    h.w->EditFreq.PressKey(EndOfLine);
    h.clock.AdvanceBy(3000);
    ASSERT_FALSE(h.Line().writes.empty()) << c.text;  // the set frame at least
    for (const std::string& w : h.Line().writes) {
      ASSERT_GE(w.size(), 4u) << c.text;
      EXPECT_EQ(static_cast<unsigned char>(w[2]), c.address) << c.text;  // radio
      EXPECT_EQ(static_cast<unsigned char>(w[3]), c.address) << c.text;  // controller
    }
  }
}

}  // namespace
}  // namespace tarn::test

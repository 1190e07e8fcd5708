#include <gtest/gtest.h>

#include <string>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// `count` bytes of the transmit ring from `from` on, as a byte string.
std::string RingBytes(const IcomWindow& w, std::size_t from, std::size_t count) {
  std::string bytes;
  for (std::size_t i = from; i < from + count; ++i) {
    bytes.push_back(static_cast<char>(w.serialBuf[i]));
  }
  return bytes;
}

TEST(StartUp, FirstValuesWithOnePort) {
  WindowHarness h;
  h.Start();
  EXPECT_EQ(h.w->SerialPopup.ListIndex(), 0);
  EXPECT_EQ(h.w->BaudPopup.ListIndex(), 8);
  EXPECT_EQ(h.w->OurIDEditFieldHex.Text(), "e0");
  EXPECT_EQ(h.w->EditUpdateRate.Text(), "2000");
  EXPECT_EQ(h.w->EditRadioIDHex.Text(), "8");
  EXPECT_EQ(h.w->ReqTimer.Period(), 1000);
  EXPECT_EQ(h.app.ourSerialPort, 0);
  EXPECT_TRUE(h.Line().open);
  EXPECT_EQ(h.Line().configured.back().baud, 9600);
  EXPECT_FALSE(h.w->StaticJamming.Visible());
  EXPECT_TRUE(h.w->FindRadiosButton.Enabled());
  EXPECT_EQ(h.w->JammerTimer.Mode(), 0);
  EXPECT_EQ(h.w->FindRadiosTimer.Mode(), 0);
  EXPECT_TRUE(h.w->pollRadios);
  EXPECT_EQ(h.w->serialBufHead, 0);
  EXPECT_EQ(h.w->serialBufTail, 0);
}

TEST(StartUp, TheFirstPortOpeningUsesTheBaudPopupsCreationRow) {
  WindowHarness h;
  h.BuildOnly();  // the open events, before init
  EXPECT_EQ(h.Line().opens, 1);
  EXPECT_EQ(h.Line().configured.back().baud, 300);
  EXPECT_EQ(h.w->ReqTimer.Period(), 1000);  // Event_Open reached the rate handler
}

TEST(StartUp, NoPortStillStartsAndPolls) {
  WindowHarness h(0);
  h.Start();
  EXPECT_EQ(h.w->SerialPopup.ListIndex(), -1);
  EXPECT_EQ(h.w->BaudPopup.ListIndex(), 8);
  EXPECT_TRUE(h.messages.shown.empty());
  // With no line there is no write to see: the poll shows in the ring, which takes each request
  // and is drained again by Timer2, and in one "send packet" line per request.
  h.clock.AdvanceBy(1500);  // the first tick asked for the frequency
  EXPECT_EQ(h.w->requestType, 1);
  EXPECT_EQ(h.log.Count("send packet"), 1);
  EXPECT_EQ(RingBytes(*h.w, 0, 6), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
  EXPECT_EQ(h.w->serialBufHead, 6);
  EXPECT_EQ(h.w->serialBufTail, 6);
  h.clock.AdvanceBy(1000);  // the second for the mode
  EXPECT_EQ(h.w->requestType, 0);
  EXPECT_EQ(h.log.Count("send packet"), 2);
  EXPECT_EQ(RingBytes(*h.w, 6, 6), Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x04, 0xFD}));
  EXPECT_EQ(h.w->serialBufHead, 12);
  EXPECT_EQ(h.w->serialBufTail, 12);
  EXPECT_TRUE(h.messages.shown.empty());
}

TEST(StartUp, CreationValuesRaisedNoHandler) {
  WindowHarness h;
  h.BuildOnly();
  EXPECT_EQ(h.w->serialBufHead, 0);  // no mode frame from the popups' creation rows
  h.w->init();
  EXPECT_EQ(h.w->serialBufHead, 0);
}

TEST(Menus, FileScanListIsTheOnlyHandledItem) {
  WindowHarness h;
  h.Start();
  const MenuItem* scan = h.w->Menus().Find("FileScanList");
  ASSERT_NE(scan, nullptr);
  EXPECT_EQ(scan->Text, "ScanList...");
  EXPECT_EQ(scan->KeyboardShortcut, "");
  EXPECT_EQ(h.w->Menus().Find("FileQuit")->KeyboardShortcut, "Cmd+Q");
  EXPECT_EQ(h.w->Menus().TopLevel().size(), 3u);
  EXPECT_FALSE(h.w->ChooseMenuItem("EditCopy"));
  EXPECT_TRUE(h.w->ChooseMenuItem("FileScanList"));  // the chooser gives nothing: cancelled
  EXPECT_EQ(h.chooser.filters, (std::vector<std::string>{"TEXT"}));
}

}  // namespace
}  // namespace tarn::test

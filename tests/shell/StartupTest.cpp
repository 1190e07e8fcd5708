#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

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
  h.clock.AdvanceBy(2500);
  EXPECT_EQ(h.w->requestType, 0);  // two requests made and sent into the void
}

TEST(StartUp, CreationValuesRaisedNoHandler) {
  WindowHarness h;
  h.BuildOnly();
  EXPECT_EQ(h.w->serialBufHead, 0);  // no mode frame from the popups' creation rows
  h.w->init();
  EXPECT_EQ(h.w->serialBufHead, 0);
}

TEST(Window, ThirtySixControlsInTheirOrderWithTheirPlaces) {
  WindowHarness h;
  h.BuildOnly();
  const auto& controls = h.w->Controls();
  ASSERT_EQ(controls.size(), 36u);
  EXPECT_EQ(controls.front()->Name(), "SerialPopup");
  EXPECT_EQ(controls[24]->Name(), "ReqTimer");
  EXPECT_EQ(controls.back()->Name(), "StaticText10");
  int tab = 0;
  for (const Control* c : controls) {
    if (c->Kind() == ControlKind::Timer) continue;
    EXPECT_EQ(c->tabIndex, tab++) << c->Name();
  }
  const Control* freq = h.w->FindControl("FreqDisplay");
  ASSERT_NE(freq, nullptr);
  EXPECT_EQ(freq->bounds.left, 87);
  EXPECT_EQ(freq->bounds.height, 30);
  EXPECT_EQ(freq->textSize, 16);
  EXPECT_EQ(h.w->StaticJamming.textColor, 0x00E2180Du);
  EXPECT_FALSE(h.w->StaticBuf.Visible());
  EXPECT_EQ(h.w->PopupMode.ListCount(), 11);
  EXPECT_EQ(h.w->BaudPopup.Rows()[9], "1440");
  EXPECT_EQ(h.w->BaudPopup.Rows()[13], "56700");
  EXPECT_EQ(h.w->Layout().Title, "Tarnline Interface");
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

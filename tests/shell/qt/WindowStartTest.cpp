// Start-up of the shown window: its first values with one port, with none, and with a port that
// will not open.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>

#include "shell/qt/ViewHarness.h"

namespace tarn::test {
namespace {

// With no open line there is no write to see. The poll shows in the "send packet" line of each
// request, in requestType between the ticks, and in the transmit ring, which takes each request
// and is drained again by Timer2.
void ExpectTwoPollTicks(ViewHarness& h) {
  h.clock.AdvanceBy(1500);  // the first tick asked for the frequency
  EXPECT_EQ(h.w->requestType, 1);
  EXPECT_EQ(h.log.Count("send packet"), 1);
  EXPECT_EQ(h.w->serialBufHead, 6);
  EXPECT_EQ(h.w->serialBufTail, 6);
  h.clock.AdvanceBy(1000);  // the second for the mode
  EXPECT_EQ(h.w->requestType, 0);
  EXPECT_EQ(h.log.Count("send packet"), 2);
  EXPECT_EQ(h.w->serialBufHead, 12);
  EXPECT_EQ(h.w->serialBufTail, 12);
}

TEST(WindowStart, OnePortOpensAt9600AndTheFieldsShowTheirFirstValues) {
  ViewHarness h;
  h.Start();
  EXPECT_EQ(h.w->SerialPopup.ListIndex(), 0);
  EXPECT_EQ(h.w->BaudPopup.ListIndex(), 8);
  EXPECT_EQ(h.w->ReqTimer.Period(), 1000);
  EXPECT_TRUE(h.Line().open);
  ASSERT_FALSE(h.Line().configured.empty());
  EXPECT_EQ(h.Line().configured.back().baud, 9600);
  EXPECT_EQ(h.Widget<QComboBox>("SerialPopup")->currentIndex(), 0);
  EXPECT_EQ(h.Widget<QComboBox>("BaudPopup")->currentIndex(), 8);
  EXPECT_EQ(h.Widget<QLineEdit>("OurIDEditFieldHex")->text(), "e0");
  EXPECT_EQ(h.Widget<QLineEdit>("EditUpdateRate")->text(), "2000");
  EXPECT_EQ(h.Widget<QLineEdit>("EditRadioIDHex")->text(), "8");
  EXPECT_TRUE(h.messages.Told().empty());
}

TEST(WindowStart, NoPortOpensNothingAndSaysNothing) {
  ViewHarness h(0);
  h.Start();
  EXPECT_TRUE(h.view->isVisible());
  auto* serial = h.Widget<QComboBox>("SerialPopup");
  EXPECT_EQ(serial->count(), 0);
  EXPECT_EQ(serial->currentIndex(), -1);
  EXPECT_EQ(h.Widget<QComboBox>("BaudPopup")->currentIndex(), 8);
  EXPECT_TRUE(h.messages.Told().empty());
  EXPECT_TRUE(h.messages.OpenBoxes().empty());
  ExpectTwoPollTicks(h);  // the poll runs into the void without complaint
  EXPECT_TRUE(h.messages.Told().empty());
}

TEST(WindowStart, APortThatFailsToOpenGivesOneMessagePerOpeningAndTheWindowStays) {
  ViewHarness h;
  h.Line().refuseOpen = true;
  h.Start();
  // SerialPopup_Open, then init's SerialPopup row and BaudPopup row: three attempts, three
  // messages.
  EXPECT_EQ(h.Line().opens, 3);
  EXPECT_EQ(h.messages.Told().size(), 3u);
  EXPECT_FALSE(h.Line().open);
  for (const std::string& m : h.messages.Told()) EXPECT_EQ(m, "Failure to open serial  port!!");
  // The same message is not stacked: one box on screen, over a window that is still up.
  ASSERT_EQ(h.messages.OpenBoxes().size(), 1u);
  EXPECT_EQ(h.messages.OpenBoxes().front()->parentWidget(), h.view.get());
  EXPECT_TRUE(h.view->isVisible());
  ExpectTwoPollTicks(h);         // the timers go on
  EXPECT_EQ(h.Line().opens, 3);  // and nothing tries the port again
  EXPECT_EQ(h.messages.Told().size(), 3u);
}

TEST(WindowStart, AFailedPortChosenAgainTellsOnceMore) {
  ViewHarness h(2);
  h.Line(1).refuseOpen = true;
  h.Start();
  EXPECT_TRUE(h.messages.Told().empty());
  auto* serial = h.Widget<QComboBox>("SerialPopup");
  emit serial->activated(1);
  EXPECT_EQ(h.messages.Told().size(), 1u);
  EXPECT_EQ(h.Line(1).opens, 1);
  emit serial->activated(0);  // back to the good port: it opens, and nothing more is said
  EXPECT_TRUE(h.Line(0).open);
  EXPECT_EQ(h.messages.Told().size(), 1u);
}

}  // namespace
}  // namespace tarn::test

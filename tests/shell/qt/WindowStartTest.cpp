// Start-up of the shown window: its first values with one port, with none, and with a port that
// will not open.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>

#include "shell/qt/ViewHarness.h"

namespace tarn::test {
namespace {

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
  h.clock.AdvanceBy(2500);  // the poll runs into the void without complaint
  EXPECT_TRUE(h.messages.Told().empty());
}

TEST(WindowStart, APortThatFailsToOpenGivesOneMessagePerOpeningAndTheWindowStays) {
  ViewHarness h;
  h.Line().refuseOpen = true;
  h.Start();
  ASSERT_GT(h.Line().opens, 0);
  EXPECT_EQ(static_cast<int>(h.messages.Told().size()), h.Line().opens);
  for (const std::string& m : h.messages.Told()) EXPECT_EQ(m, "Failure to open serial  port!!");
  // The same message is not stacked: one box on screen, over a window that is still up.
  ASSERT_EQ(h.messages.OpenBoxes().size(), 1u);
  EXPECT_EQ(h.messages.OpenBoxes().front()->parentWidget(), h.view.get());
  EXPECT_TRUE(h.view->isVisible());
  h.clock.AdvanceBy(2500);  // the timers go on
  EXPECT_EQ(h.w->requestType, 0);
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

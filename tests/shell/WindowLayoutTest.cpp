// The window as it is created, before its open events: its own properties and its 36 controls, one
// row each in the order of creation, with their places, tab order, text sizes, texts or rows,
// visibility and colour, and for the timers their Mode and Period.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

constexpr std::uint32_t kBlack = 0;
constexpr std::uint32_t kJammingRed = 0x00E2180D;

struct ControlRow {
  std::string name;
  ControlKind kind;
  Bounds bounds;
  int tabIndex = -1;
  int textSize = 0;
  // The text of a static text or edit field, the caption of a check box or button, the rows of a
  // popup; nothing for a timer.
  std::vector<std::string> shown;
  bool visible = true;
  std::uint32_t textColor = kBlack;
  i64 mode = 0, period = 0;  // timers only
};

ControlRow Popup(std::string name, Bounds b, int tab, int size, std::vector<std::string> rows) {
  return {std::move(name), ControlKind::PopupMenu, b, tab, size, std::move(rows)};
}
ControlRow Edit(std::string name, Bounds b, int tab, int size, std::string text) {
  return {std::move(name), ControlKind::EditField, b, tab, size, {std::move(text)}};
}
ControlRow Label(std::string name, Bounds b, int tab, int size, std::string text) {
  return {std::move(name), ControlKind::StaticText, b, tab, size, {std::move(text)}};
}
ControlRow Check(std::string name, Bounds b, int tab, int size, std::string caption) {
  return {std::move(name), ControlKind::CheckBox, b, tab, size, {std::move(caption)}};
}
ControlRow Button(std::string name, Bounds b, int tab, int size, std::string caption) {
  return {std::move(name), ControlKind::PushButton, b, tab, size, {std::move(caption)}};
}
ControlRow TimerRow(std::string name, i64 mode, i64 period) {
  ControlRow row{std::move(name), ControlKind::Timer, {}, -1, 0, {}};
  row.mode = mode;
  row.period = period;
  return row;
}
ControlRow Hidden(ControlRow row) {
  row.visible = false;
  return row;
}
ControlRow Coloured(ControlRow row, std::uint32_t colour) {
  row.textColor = colour;
  return row;
}

const std::vector<ControlRow>& ControlTable() {
  static const std::vector<ControlRow> table = {
      Popup("SerialPopup", {109, 14, 280, 20}, 0, 12, {}),
      Edit("EditField1", {10, 345, 527, 164}, 1, 12, ""),
      TimerRow("Timer1", 2, 50),
      Popup("BaudPopup", {109, 44, 95, 20}, 2, 12,
            {"300", "600", "1200", "1800", "2400", "3600", "4800", "7200", "9600", "1440", "19200",
             "28800", "38400", "56700"}),
      Label("StaticText1", {20, 14, 70, 20}, 3, 12, "Serial Port:"),
      Label("StaticText2", {20, 44, 70, 20}, 4, 12, "Baud Rate:"),
      Label("StaticText3", {216, 44, 50, 20}, 5, 12, "Our ID:"),
      Edit("OurIDEditFieldHex", {275, 44, 52, 22}, 6, 12, ""),
      Check("ShowDataCheck", {10, 313, 95, 20}, 7, 12, "Show Data"),
      Button("FindRadiosButton", {260, 313, 117, 20}, 8, 12, "Find All Radios"),
      Hidden(Label("StaticBuf", {242, 80, 202, 20}, 9, 12, "-")),
      Check("DebugCheckBox", {109, 313, 80, 20}, 10, 12, "Debug"),
      Coloured(Hidden(Label("StaticJamming", {20, 111, 100, 20}, 11, 12, "JAMMING CODE")),
               kJammingRed),
      TimerRow("JammerTimer", 0, 1000),
      TimerRow("FindRadiosTimer", 0, 1000),
      Label("StaticFindRadios", {392, 312, 145, 20}, 12, 0, "-"),
      Edit("EditFreq", {75, 141, 110, 20}, 13, 12, ""),
      Label("StaticText4", {20, 142, 43, 19}, 14, 12, "Freq:"),
      Button("SetFreq1", {191, 139, 60, 22}, 15, 12, "Set"),
      Popup("kHzPopup", {269, 141, 80, 20}, 16, 12, {"kHz", "MHz"}),
      Label("FreqDisplay", {87, 166, 110, 30}, 17, 16, "-"),
      Label("ModeDisplay", {89, 198, 100, 20}, 18, 12, "-"),
      Label("FilterDisplay", {209, 198, 100, 20}, 19, 12, "-"),
      Edit("EditRadioIDHex", {269, 109, 48, 22}, 20, 0, "8"),
      TimerRow("ReqTimer", 2, 100),
      Label("StaticText5", {191, 110, 66, 20}, 21, 0, "Radio ID:"),
      Label("StaticText6", {20, 176, 43, 20}, 22, 0, "Freq:"),
      Label("StaticText7", {20, 197, 45, 20}, 23, 0, "Mode:"),
      Popup("PopupFreqBytes", {451, 109, 64, 20}, 24, 0, {"4", "5"}),
      Label("StaticText8", {389, 110, 45, 20}, 25, 0, "Bytes:"),
      Popup("PopupMode", {359, 141, 80, 20}, 26, 0,
            {"LSB", "USB", "AM", "CW", "RTTY", "FM", "FM-WIDE", "CW-REVERSE", "RTTY-REVERSE",
             "SYNC-AM", "SSB"}),
      Popup("PopupFilter", {451, 141, 105, 20}, 27, 0, {"Wide", "Medium", "Narrow"}),
      TimerRow("Timer2", 2, 10),
      Label("StaticText9", {324, 110, 38, 20}, 28, 0, "Hex"),
      Edit("EditUpdateRate", {456, 171, 80, 22}, 29, 0, "2000"),
      Label("StaticText10", {359, 172, 85, 20}, 30, 0, "Update rate:"),
  };
  return table;
}

// The window right after its construction: no open event has run, so the timers and fields still
// hold their creation values (the open events change ReqTimer's Period and fill SerialPopup).
struct CreatedWindow {
  CreatedWindow()
      : w(h.app, WindowServices{h.clock, h.ports, h.driver, h.log, h.messages, h.chooser, {}}) {}
  WindowHarness h;
  IcomWindow w;
};

std::vector<std::string> Shown(const Control& c) {
  switch (c.Kind()) {
    case ControlKind::PopupMenu:
      return static_cast<const PopupMenu&>(c).Rows();
    case ControlKind::EditField:
      return {static_cast<const EditField&>(c).Text()};
    case ControlKind::StaticText:
      return {static_cast<const StaticText&>(c).Text()};
    case ControlKind::CheckBox:
      return {static_cast<const CheckBox&>(c).caption};
    case ControlKind::PushButton:
      return {static_cast<const PushButton&>(c).caption};
    case ControlKind::Timer:
      break;
  }
  return {};
}

TEST(WindowLayout, TheWindowHasItsTitleAndAFixedSize) {
  CreatedWindow created;
  const WindowLayout& layout = created.w.Layout();
  EXPECT_EQ(layout.Title, "Tarnline Interface");
  EXPECT_EQ(layout.Width, 576);
  EXPECT_EQ(layout.Height, 529);
  EXPECT_FALSE(layout.Resizeable);
}

TEST(WindowLayout, ThirtySixControlsInCreationOrderWithTheirCreationValues) {
  CreatedWindow created;
  const std::vector<Control*>& controls = created.w.Controls();
  const std::vector<ControlRow>& table = ControlTable();
  ASSERT_EQ(table.size(), 36u);
  ASSERT_EQ(controls.size(), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    const ControlRow& row = table[i];
    const Control& c = *controls[i];
    SCOPED_TRACE("row " + std::to_string(i + 1) + ": " + row.name);
    EXPECT_EQ(c.Name(), row.name);
    EXPECT_EQ(created.w.FindControl(row.name), &c);
    ASSERT_EQ(c.Kind(), row.kind);
    EXPECT_EQ(c.tabIndex, row.tabIndex);
    EXPECT_TRUE(c.Enabled());
    if (row.kind == ControlKind::Timer) {
      const auto& timer = static_cast<const Timer&>(c);
      EXPECT_EQ(timer.Mode(), row.mode);
      EXPECT_EQ(timer.Period(), row.period);
      continue;
    }
    EXPECT_EQ(c.bounds.left, row.bounds.left);
    EXPECT_EQ(c.bounds.top, row.bounds.top);
    EXPECT_EQ(c.bounds.width, row.bounds.width);
    EXPECT_EQ(c.bounds.height, row.bounds.height);
    EXPECT_EQ(c.textSize, row.textSize);
    EXPECT_EQ(Shown(c), row.shown);
    EXPECT_EQ(c.Visible(), row.visible);
    EXPECT_EQ(c.textColor, row.textColor);
    if (row.kind == ControlKind::PopupMenu) {
      // The first row is selected; a popup without rows selects none.
      EXPECT_EQ(static_cast<const PopupMenu&>(c).ListIndex(), row.shown.empty() ? -1 : 0);
    }
    if (row.kind == ControlKind::EditField) {
      EXPECT_EQ(static_cast<const EditField&>(c).multiline, row.name == "EditField1");
    }
    if (row.kind == ControlKind::CheckBox) {
      EXPECT_FALSE(static_cast<const CheckBox&>(c).Value());
    }
  }
}

}  // namespace
}  // namespace tarn::test

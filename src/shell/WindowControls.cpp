// SPDX-License-Identifier: GPL-3.0-or-later
// Building the window: the link state, the 36 controls with their creation values, the 14 event
// bindings and the one menu handler. Creation values are applied before any handler is attached,
// so none of them raises an event.
#include <algorithm>

#include "link/IcomWindow.h"
#include "shell/MenuBar.h"

namespace tarn {

namespace {

constexpr std::uint32_t kJammingRed = 0x00E2180D;

template <class C>
C& Place(C& control, Bounds bounds, int tabIndex, int textSize) {
  control.bounds = bounds;
  control.tabIndex = tabIndex;
  control.textSize = textSize;
  return control;
}

// What a screen reader says of a control whose own text does not name it (see Controls.h).
void Speak(Control& control, std::string name, std::string description = {}) {
  control.accessibleName = std::move(name);
  control.accessibleDescription = std::move(description);
}

// A label names the control beside it: the control is called by the label's words without the
// colon, unless it has a name of its own.
void Label(StaticText& label, Control& control) {
  label.labelFor = &control;
  if (!control.accessibleName.empty()) return;
  std::string name = label.Text();
  if (!name.empty() && name.back() == ':') name.pop_back();
  control.accessibleName = name;
}

}  // namespace

IcomWindow::IcomWindow(App& theApp, WindowServices services)
    : Timer1("Timer1", services.clock, 2, 50),
      JammerTimer("JammerTimer", services.clock, 0, 1000),
      FindRadiosTimer("FindRadiosTimer", services.clock, 0, 1000),
      ReqTimer("ReqTimer", services.clock, 2, 100),
      Timer2("Timer2", services.clock, 2, 10),
      app(theApp),
      services_(std::move(services)),
      System{services_.ports, services_.log} {
  layout_ = {"Tarnline Interface", 576, 529, false};
  menus_ = BuildMenuBar1();
  CreateControls();
  AttachHandlers();
  AddMenuHandlers();
}

IcomWindow::~IcomWindow() {
  // The timers go before anything their handlers touch.
  for (Control* c : controls_) {
    if (c->Kind() == ControlKind::Timer) static_cast<Timer*>(c)->Action = nullptr;
  }
}

void IcomWindow::CreateControls() {
  controls_ = {&SerialPopup,    &EditField1,       &Timer1,          &BaudPopup,
               &StaticText1,    &StaticText2,      &StaticText3,     &OurIDEditFieldHex,
               &ShowDataCheck,  &FindRadiosButton, &StaticBuf,       &DebugCheckBox,
               &StaticJamming,  &JammerTimer,      &FindRadiosTimer, &StaticFindRadios,
               &EditFreq,       &StaticText4,      &SetFreq1,        &kHzPopup,
               &FreqDisplay,    &ModeDisplay,      &FilterDisplay,   &EditRadioIDHex,
               &ReqTimer,       &StaticText5,      &StaticText6,     &StaticText7,
               &PopupFreqBytes, &StaticText8,      &PopupMode,       &PopupFilter,
               &Timer2,         &StaticText9,      &EditUpdateRate,  &StaticText10};

  Place(SerialPopup, {109, 14, 280, 20}, 0, 12).InitRows("", 0);
  Place(EditField1, {10, 345, 527, 164}, 1, 12).multiline = true;
  Speak(EditField1, "Received data",
        "Received bytes in hex while Show Data is on, and the addresses Find All Radios found");
  Place(BaudPopup, {109, 44, 95, 20}, 2, 12)
      .InitRows(
          "300\r600\r1200\r1800\r2400\r3600\r4800\r7200\r9600\r1440\r19200\r28800\r38400\r56700",
          0);
  Place(StaticText1, {20, 14, 70, 20}, 3, 12).InitText("Serial Port:");
  Label(StaticText1, SerialPopup);
  Place(StaticText2, {20, 44, 70, 20}, 4, 12).InitText("Baud Rate:");
  Label(StaticText2, BaudPopup);
  Place(StaticText3, {216, 44, 50, 20}, 5, 12).InitText("Our ID:");
  Speak(OurIDEditFieldHex, "", "The bus address of this controller, in hex");
  Label(StaticText3, OurIDEditFieldHex);
  Place(OurIDEditFieldHex, {275, 44, 52, 22}, 6, 12);
  Place(ShowDataCheck, {10, 313, 95, 20}, 7, 12).caption = "Show Data";
  Speak(ShowDataCheck, "", "Shows received bytes in hex under Received data");
  Place(FindRadiosButton, {260, 313, 117, 20}, 8, 12).caption = "Find All Radios";
  Speak(FindRadiosButton, "",
        "Asks every bus address from 0 to 255, one a second, and lists under Received data each "
        "one after which a radio answered; takes 4 minutes 19 seconds");
  Place(StaticBuf, {242, 80, 202, 20}, 9, 12).InitText("-");
  StaticBuf.SetVisible(false);
  Place(DebugCheckBox, {109, 313, 80, 20}, 10, 12).caption = "Debug";
  Speak(DebugCheckBox, "", "Appends received bytes in hex to DEBUG.TXT");
  Place(StaticJamming, {20, 111, 100, 20}, 11, 12).InitText("JAMMING CODE");
  Speak(StaticJamming, "Jam code", "Shows for a second when a jam code comes over the bus");
  StaticJamming.SetVisible(false);
  StaticJamming.textColor = kJammingRed;
  Place(StaticFindRadios, {392, 312, 145, 20}, 12, 0).InitText("-");
  Speak(StaticFindRadios, "Radio search", "The bus address Find All Radios is asking");
  Place(EditFreq, {75, 141, 110, 20}, 13, 12);
  Speak(EditFreq, "Frequency to set", "In the Frequency unit; Return or Set sends it");
  Place(StaticText4, {20, 142, 43, 19}, 14, 12).InitText("Freq:");
  Label(StaticText4, EditFreq);
  Place(SetFreq1, {191, 139, 60, 22}, 15, 12).caption = "Set";
  Place(kHzPopup, {269, 141, 80, 20}, 16, 12).InitRows("kHz\rMHz", 0);
  Speak(kHzPopup, "Frequency unit");
  Place(FreqDisplay, {87, 166, 110, 30}, 17, 16).InitText("-");
  Speak(FreqDisplay, "Frequency", "The radio's frequency in kHz");
  Place(ModeDisplay, {89, 198, 100, 20}, 18, 12).InitText("-");
  Place(FilterDisplay, {209, 198, 100, 20}, 19, 12).InitText("-");
  Speak(FilterDisplay, "Filter");
  Place(EditRadioIDHex, {269, 109, 48, 22}, 20, 0).InitText("8");
  Speak(EditRadioIDHex, "", "The bus address of the radio, in hex");
  Place(StaticText5, {191, 110, 66, 20}, 21, 0).InitText("Radio ID:");
  Label(StaticText5, EditRadioIDHex);
  Place(StaticText6, {20, 176, 43, 20}, 22, 0).InitText("Freq:");
  Label(StaticText6, FreqDisplay);
  Place(StaticText7, {20, 197, 45, 20}, 23, 0).InitText("Mode:");
  Label(StaticText7, ModeDisplay);
  Place(PopupFreqBytes, {451, 109, 64, 20}, 24, 0).InitRows("4\r5", 0);
  Place(StaticText8, {389, 110, 45, 20}, 25, 0).InitText("Bytes:");
  Speak(PopupFreqBytes, "", "How many bytes a frequency takes on the bus");
  Label(StaticText8, PopupFreqBytes);
  Place(PopupMode, {359, 141, 80, 20}, 26, 0)
      .InitRows("LSB\rUSB\rAM\rCW\rRTTY\rFM\rFM-WIDE\rCW-REVERSE\rRTTY-REVERSE\rSYNC-AM\rSSB", 0);
  Speak(PopupMode, "Mode to set", "Sent to the radio with the filter as it is chosen");
  Place(PopupFilter, {451, 141, 105, 20}, 27, 0).InitRows("Wide\rMedium\rNarrow", 0);
  Speak(PopupFilter, "Filter to set", "Sent to the radio with the mode as it is chosen");
  Place(StaticText9, {324, 110, 38, 20}, 28, 0).InitText("Hex");
  Label(StaticText9, EditRadioIDHex);
  Place(EditUpdateRate, {456, 171, 80, 22}, 29, 0).InitText("2000");
  Speak(EditUpdateRate, "", "One full polling cycle, in milliseconds");
  Place(StaticText10, {359, 172, 85, 20}, 30, 0).InitText("Update rate:");
  Label(StaticText10, EditUpdateRate);
}

void IcomWindow::AttachHandlers() {
  // SerialPopup's Open event is raised by Open(), once the window stands.
  SerialPopup.Change = [this](PopupMenu& s) { SerialPopup_Change(s); };
  SerialPopup.ListOpening = [this](PopupMenu& s) { SerialPopup_ListOpening(s); };
  Timer1.Action = [this](Timer& t) { Timer1_Action(t); };
  BaudPopup.Change = [this](PopupMenu& s) { BaudPopup_Change(s); };
  FindRadiosButton.Action = [this](PushButton& b) { FindRadiosButton_Action(b); };
  JammerTimer.Action = [this](Timer& t) { JammerTimer_Action(t); };
  FindRadiosTimer.Action = [this](Timer& t) { FindRadiosTimer_Action(t); };
  EditFreq.KeyDown = [this](EditField& f, std::string_view key) {
    return EditFreq_KeyDown(f, key);
  };
  SetFreq1.Action = [this](PushButton& b) { SetFreq1_Action(b); };
  ReqTimer.Action = [this](Timer& t) { ReqTimer_Action(t); };
  PopupMode.Change = [this](PopupMenu& s) { PopupMode_Change(s); };
  PopupFilter.Change = [this](PopupMenu& s) { PopupFilter_Change(s); };
  Timer2.Action = [this](Timer& t) { Timer2_Action(t); };
  EditUpdateRate.TextChange = [this](EditField& f) { EditUpdateRate_TextChange(f); };
  SleepWhenIdle();
}

// The pump and the ring sleep while a tick would find nothing: the line and SendSerialPacket wake
// them.
void IcomWindow::SleepWhenIdle() {
  Timer1.SleepWhenIdle([this] { return Serial1 && Serial1->WantsRead(); });
  Timer2.SleepWhenIdle([this] { return RingWaiting() > 0; });
}

void IcomWindow::AddMenuHandlers() {
  menuHandlers_["FileScanList"] = [this] { return FileScanList_Action(); };
}

bool IcomWindow::ChooseMenuItem(std::string_view itemName) {
  const auto it = menuHandlers_.find(itemName);
  if (it == menuHandlers_.end()) return false;
  it->second();
  return true;
}

Control* IcomWindow::FindControl(std::string_view name) const {
  const auto it = std::find_if(controls_.begin(), controls_.end(),
                               [&](const Control* c) { return c->Name() == name; });
  return it == controls_.end() ? nullptr : *it;
}

void IcomWindow::Open() {
  SerialPopup_Open(SerialPopup);
  services_.clock.WakeOnInput(*Serial1, Timer1);
  Event_Open();
}

}  // namespace tarn

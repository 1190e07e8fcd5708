// SPDX-License-Identifier: GPL-3.0-or-later
// IcomWindow: the one window of Tarnline, and the link state of the CI-V bus.
//
// There is no separate connection, device or protocol object. This one object owns the 36 control
// models, the serial port `Serial1`, the frame receiver's working fields, the transmit ring and
// the flags of the radio search and the scan list player; its operations call each other directly
// and read the properties directly. The operations live in the files of their subsystems:
//   link/         FromHex, the frame receiver (ParseByte), reply decoding, command frames
//   serial/       port selection, the receive pump (CheckSerial), the transmit ring
//   operations/   status polling, tuning controls, radio discovery, scan list playback
//   diagnostics/  the debug files
//   shell/        creation of the controls, start-up (init), the menus
//
// One thread: every operation runs on the event loop's thread, from a timer or a control event,
// and nothing is locked. Time comes from the injected Clock, never from a wall clock, so the whole
// window runs in tests on a virtual clock with no display. The Qt side (platform/qt, shell/qt)
// only mirrors the control models in widgets.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "link/App.h"
#include "platform/Controls.h"
#include "platform/Menus.h"
#include "platform/Serial.h"
#include "platform/System.h"
#include "platform/Timer.h"

namespace tarn {

// What the window takes from the outside world.
struct WindowServices {
  Clock& clock;
  PortCatalog& ports;
  SerialDriver& serialDriver;
  LogSink& log;
  MessageSink& messages;
  FileChooser& files;
  std::string workFolder;  // where DEBUG.TXT and PARSEDEBUG.TXT are appended to
};

// System.SerialPortCount, System.SerialPort(i), System.DebugLog.
struct SystemServices {
  PortCatalog& ports;
  LogSink& log;
  i64 SerialPortCount() const { return ports.Count(); }
  tarn::SerialPort SerialPort(i64 index) const { return ports.At(index); }
  void DebugLog(std::string_view text) const { log.DebugLog(text); }
};

struct WindowLayout {
  std::string Title;
  int Width = 0, Height = 0;
  bool Resizeable = false;
};

class IcomWindow {
 public:
  static constexpr i64 kParseMsgBound = 256;
  static constexpr i64 kSerialBufBound = 10000;
  static constexpr i64 kRingPositions = 10000;  // index 10000 exists and is never used
  static constexpr i64 kMonitorKeep = 500;      // characters of the monitor kept before a read

  IcomWindow(App& app, WindowServices services);
  ~IcomWindow();
  IcomWindow(const IcomWindow&) = delete;
  IcomWindow& operator=(const IcomWindow&) = delete;

  // The window's open events, raised by the shell once the window stands: SerialPopup_Open, then
  // Event_Open. App.Event_Open calls init after them.
  void Open();

  // --- the link state, in the order of its declaration ---
  std::unique_ptr<Serial> Serial1;
  std::array<i64, 257> radioIDs{};
  std::array<i64, 257> radioTypes{};
  std::array<std::string, 257> radioNicks{};
  i64 parseState = 0;
  i64 parseCmd = 0;
  std::array<i64, kParseMsgBound + 1> parseMsg{};
  i64 parseToID = 0;
  i64 parseFromID = 0;
  i64 parseMsgLength = 0;
  std::array<i64, kSerialBufBound + 1> serialBuf{};
  i64 serialBufHead = 0;
  i64 serialBufTail = 0;
  std::array<i64, 21> rwID{};
  bool pollRadios = true;
  i64 findRadiosState = 0;
  bool gotFreqReply = false;
  i64 requestType = 0;
  bool gotAckNak = false;

  // --- the controls, in the order of their creation ---
  PopupMenu SerialPopup{"SerialPopup"};
  EditField EditField1{"EditField1"};
  Timer Timer1;
  PopupMenu BaudPopup{"BaudPopup"};
  StaticText StaticText1{"StaticText1"};
  StaticText StaticText2{"StaticText2"};
  StaticText StaticText3{"StaticText3"};
  EditField OurIDEditFieldHex{"OurIDEditFieldHex"};
  CheckBox ShowDataCheck{"ShowDataCheck"};
  PushButton FindRadiosButton{"FindRadiosButton"};
  StaticText StaticBuf{"StaticBuf"};
  CheckBox DebugCheckBox{"DebugCheckBox"};
  StaticText StaticJamming{"StaticJamming"};
  Timer JammerTimer;
  Timer FindRadiosTimer;
  StaticText StaticFindRadios{"StaticFindRadios"};
  EditField EditFreq{"EditFreq"};
  StaticText StaticText4{"StaticText4"};
  PushButton SetFreq1{"SetFreq1"};
  PopupMenu kHzPopup{"kHzPopup"};
  StaticText FreqDisplay{"FreqDisplay"};
  StaticText ModeDisplay{"ModeDisplay"};
  StaticText FilterDisplay{"FilterDisplay"};
  EditField EditRadioIDHex{"EditRadioIDHex"};
  Timer ReqTimer;
  StaticText StaticText5{"StaticText5"};
  StaticText StaticText6{"StaticText6"};
  StaticText StaticText7{"StaticText7"};
  PopupMenu PopupFreqBytes{"PopupFreqBytes"};
  StaticText StaticText8{"StaticText8"};
  PopupMenu PopupMode{"PopupMode"};
  PopupMenu PopupFilter{"PopupFilter"};
  Timer Timer2;
  StaticText StaticText9{"StaticText9"};
  EditField EditUpdateRate{"EditUpdateRate"};
  StaticText StaticText10{"StaticText10"};

  // All 36 controls in the order of creation, for views and tests.
  const std::vector<Control*>& Controls() const { return controls_; }
  Control* FindControl(std::string_view name) const;
  const WindowLayout& Layout() const { return layout_; }
  const MenuBar& Menus() const { return menus_; }
  // Runs the handler bound to a menu item; false when the item has none.
  bool ChooseMenuItem(std::string_view itemName);

  // --- event handlers ---
  void SerialPopup_Open(PopupMenu& sender);
  void SerialPopup_Change(PopupMenu& sender);
  void SerialPopup_ListOpening(PopupMenu& sender);
  void Timer1_Action(Timer& sender);
  void BaudPopup_Change(PopupMenu& sender);
  void FindRadiosButton_Action(PushButton& sender);
  void JammerTimer_Action(Timer& sender);
  void FindRadiosTimer_Action(Timer& sender);
  bool EditFreq_KeyDown(EditField& sender, std::string_view key);
  void SetFreq1_Action(PushButton& sender);
  void ReqTimer_Action(Timer& sender);
  void PopupMode_Change(PopupMenu& sender);
  void PopupFilter_Change(PopupMenu& sender);
  void Timer2_Action(Timer& sender);
  void EditUpdateRate_TextChange(EditField& sender);
  void Event_Open();
  void Event_Close() {}
  bool FileScanList_Action();

  // --- operations ---
  void CheckSerial();
  std::string Convert(i64 pair);
  void SetSerialStuff(i64 port, i64 baud);
  void SetFreq(i64 radio, double frequency);
  void ParseByte(i64 value);
  void ParseMessage();
  void ReqFreq(i64 radio);
  i64 ConvertBack(i64 value);
  double ParseFreq();
  i64 ParseMode();
  void ReqMode(i64 radio);
  void SendSerialPacket(std::string_view packet);
  void DoSerialOut();
  void AddToDebugFile(std::string_view text);
  void AddToParseDebugFile(std::string_view text);
  void init();
  // Back to the state a new window has after init, without building one; the port stays as it is.
  // The program never calls it: a harness that runs many inputs through one window does.
  void Restart();
  void UpdateFreq(double frequency);
  void UpdateMode(i64 mode, i64 filter);
  void SetMode();
  i64 FromHex(std::string_view text);
  i64 FromHexDigit(std::string_view digit);
  void SetTheFreq();

  // Frames refused because the transmit ring had no room for them, since start.
  i64 RefusedFrames() const { return refusedFrames_; }

 private:
  void CreateControls();
  void AttachHandlers();
  void SleepWhenIdle();
  void AddMenuHandlers();
  void MsgBox(std::string_view text) { services_.messages.MsgBox(text); }
  std::optional<std::string> GetOpenFolderItem(std::string_view filter) {
    return services_.files.GetOpenFolderItem(filter);
  }
  i64 RingWaiting() const;
  void StoreDataByte(i64 value);
  void EndOfFrame();
  bool WaitForAnswer();
  bool AppendTrace(const std::string& fileName, std::string_view text, bool& failureTold);

  App& app;
  WindowServices services_;
  SystemServices System;
  WindowLayout layout_;
  MenuBar menus_;
  std::map<std::string, std::function<bool()>, std::less<>> menuHandlers_;
  std::vector<Control*> controls_;
  i64 refusedFrames_ = 0;
  i64 refusedUntold_ = 0;
  bool debugFileFailureTold_ = false;
  bool parseDebugFileFailureTold_ = false;
};

}  // namespace tarn

// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Both traces add hex text to what their file holds, from an earlier run too, with no line end.
// Only DEBUG.TXT also goes to the log; PARSEDEBUG.TXT is made from raw bytes and is created even
// by an empty text.
TEST(DebugFiles, AppendHexTextWithNoLineEnds) {
  TempFolder dir;
  dir.Write("DEBUG.TXT", "AA_");
  WindowHarness h(1, dir.Path());
  h.BuildOnly();
  h.w->AddToDebugFile("FE_0D_");
  h.w->AddToParseDebugFile("");
  EXPECT_TRUE(dir.Exists("PARSEDEBUG.TXT"));
  h.w->AddToParseDebugFile(Bytes({0x0D, 0xFE}));
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "AA_FE_0D_");
  EXPECT_EQ(dir.Read("PARSEDEBUG.TXT"), "0D_FE_");
  EXPECT_EQ(h.log.lines, std::vector<std::string>{"FE_0D_"});
}

// The pump traces a read only while the box is on, whether the monitor is on or not. A frame's
// bytes show in the monitor only after the receiver has put the frame on the displays.
TEST(DebugFiles, ThePumpTracesAReadOnlyWhileTheBoxIsOn) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.Start();
  std::string freqWhenShown;
  h.w->EditField1.TextChange = [&](EditField&) { freqWhenShown = h.w->FreqDisplay.Text(); };
  h.w->ShowDataCheck.SetValue(true);
  h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0, 0, 0x50, 0x45, 0x01, 0xFD});
  h.w->CheckSerial();
  EXPECT_EQ(freqWhenShown, "145500");
  EXPECT_FALSE(dir.Exists("DEBUG.TXT"));
  h.w->ShowDataCheck.SetValue(false);
  h.w->DebugCheckBox.SetValue(true);
  h.Line().incoming = Bytes({0x0A});
  h.w->CheckSerial();
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "0A_");
}

// A folder in the file's place cannot be written, also not by root. The failure is told once, and
// told again only after a write has succeeded in between.
TEST(DebugFiles, AFailureIsToldOnceUntilAWriteSucceeds) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.BuildOnly();
  const std::string file = dir.File("DEBUG.TXT");
  const std::string told = "cannot write " + file + "; the trace goes on without it";
  for (bool writable : {false, false, true, false}) {
    std::filesystem::remove(file);
    if (!writable) std::filesystem::create_directory(file);
    h.w->AddToDebugFile("01_");
  }
  EXPECT_EQ(std::count(h.log.lines.begin(), h.log.lines.end(), told), 2);
}

}  // namespace
}  // namespace tarn::test

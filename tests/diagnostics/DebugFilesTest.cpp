#include <gtest/gtest.h>

#include <algorithm>

#include "support/TempFolder.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

long WriteFailuresTold(const WindowHarness& h) {
  return std::count_if(h.log.lines.begin(), h.log.lines.end(),
                       [](const std::string& l) { return l.rfind("cannot write", 0) == 0; });
}

TEST(DebugFile, CreatedThenAppendedWithNoLineEnds) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->DebugCheckBox.SetValue(true);
  h.Line().incoming = Bytes({0xFE});
  h.w->CheckSerial();
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "FE_");
  h.Line().incoming = Bytes({0x0D});
  h.w->CheckSerial();
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "FE_0D_");  // six characters, no line end
}

TEST(DebugFile, SurvivesARestartAndAGapWithTheBoxOff) {
  TempFolder dir;
  dir.Write("DEBUG.TXT", "AA_");
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->DebugCheckBox.SetValue(true);
  h.Line().incoming = Bytes({0x01});
  h.w->CheckSerial();
  h.w->DebugCheckBox.SetValue(false);
  h.Line().incoming = Bytes({0x02});
  h.w->CheckSerial();
  h.w->DebugCheckBox.SetValue(true);
  h.Line().incoming = Bytes({0x03, 0x04});
  h.w->CheckSerial();
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "AA_01_03_04_");
}

TEST(DebugFile, TheMonitorOffStillFeedsTheFileAndTheLog) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->DebugCheckBox.SetValue(true);
  h.log.lines.clear();
  h.Line().incoming = Bytes({0xFE, 0xFD});
  h.w->CheckSerial();
  EXPECT_EQ(dir.Read("DEBUG.TXT"), "FE_FD_");
  EXPECT_EQ(h.log.lines, (std::vector<std::string>{"FE_FD_"}));
  EXPECT_EQ(h.w->EditField1.Text(), "");
}

TEST(DebugFile, AnUnwritableFileCostsThePumpNothingAndIsToldOnce) {
  TempFolder dir;
  // A folder in the file's place cannot be opened for writing, also not by root.
  std::filesystem::create_directory(dir.File("DEBUG.TXT"));
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->DebugCheckBox.SetValue(true);
  for (int i = 0; i < 5; ++i) {
    h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x00, 0x50, 0x45, 0x01, 0xFD});
    h.w->CheckSerial();
  }
  EXPECT_EQ(h.w->FreqDisplay.Text(), "145500");
  EXPECT_EQ(WriteFailuresTold(h), 1);
}

TEST(DebugFile, AFolderThatIsNotThereIsSurvivedToo) {
  WindowHarness h(1, "/nonexistent-folder-for-tarnline-tests/sub");
  h.Start();
  h.w->DebugCheckBox.SetValue(true);
  for (int i = 0; i < 3; ++i) {
    h.Line().incoming = Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x04, 0x01, 0x02, 0xFD});
    h.w->CheckSerial();
  }
  EXPECT_EQ(h.w->ModeDisplay.Text(), "USB");
  EXPECT_EQ(WriteFailuresTold(h), 1);
}

TEST(ParseDebugFile, ConvertsRawBytesItselfAndAnEmptyTextLeavesAnEmptyFile) {
  TempFolder dir;
  WindowHarness h(1, dir.Path());
  h.Start();
  h.w->AddToParseDebugFile("");
  EXPECT_TRUE(dir.Exists("PARSEDEBUG.TXT"));
  EXPECT_EQ(dir.Read("PARSEDEBUG.TXT"), "");
  h.log.lines.clear();
  h.w->AddToParseDebugFile(Bytes({0x0D, 0xFE}));
  EXPECT_EQ(dir.Read("PARSEDEBUG.TXT"), "0D_FE_");
  EXPECT_TRUE(h.log.lines.empty());
}

}  // namespace
}  // namespace tarn::test

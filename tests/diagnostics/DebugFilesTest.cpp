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

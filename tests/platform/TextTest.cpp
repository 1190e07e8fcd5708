// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "platform/Text.h"
#include "platform/TextFiles.h"
#include "support/TempFolder.h"

namespace tarn::test {
namespace {

TEST(Val, TakesTheDecimalNumberAtTheStartOfTheText) {
  const double inf = std::numeric_limits<double>::infinity();
  const std::pair<const char*, double> cases[] = {
      {" \t-7.5 MHz", -7.5}, {"+.5", 0.5},     {"1e3", 1000.0}, {"1e", 1.0},  {"1e-999", 0.0},
      {"1e999", inf},        {"-1e999", -inf}, {"0x10", 0.0},   {"inf", 0.0}, {".", 0.0},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(Val(text), value) << text;
}

// A line of blanks before the number, far longer than a buffer of a few kB, still reaches Val
// whole; only a file with no line ends at all meets the bound.
TEST(TextInputStream, SkipsAByteOrderMarkAndKeepsTheFirstMiBOfALine) {
  const std::string kept(TextInputStream::kMaxLineBytes, '7');
  TempFolder dir;
  dir.Write("list.txt", "\xEF\xBB\xBF" + kept + "8\r\n" + std::string(5000, ' ') + "7.1");
  auto in = TextInputStream::Open(dir.File("list.txt"));
  ASSERT_NE(in, nullptr);
  EXPECT_EQ(in->ReadLine(), kept);
  EXPECT_EQ(Val(in->ReadLine()), 7.1);
  EXPECT_TRUE(in->EndOfFile());
}

// The caller holds the window while it reads: a FIFO must not even wait for a writer (an open
// that waits hangs this test), and neither it nor a folder opens.
TEST(TextInputStream, OpensOnlyARegularFile) {
  TempFolder dir;
  ASSERT_EQ(::mkfifo(dir.File("fifo").c_str(), 0600), 0);
  EXPECT_EQ(TextInputStream::Open(dir.File("fifo")), nullptr);
  EXPECT_EQ(TextInputStream::Open(dir.Path()), nullptr);
}

}  // namespace
}  // namespace tarn::test

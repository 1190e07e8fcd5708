#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <string>
#include <vector>

#include "platform/TextFiles.h"
#include "support/TempFolder.h"

namespace tarn::test {
namespace {

std::vector<std::string> ReadAllLines(TextInputStream& in) {
  std::vector<std::string> lines;
  while (!in.EndOfFile()) lines.push_back(in.ReadLine());
  return lines;
}

// A line of `n` bytes that differ along its length, so that a kept part shows where it came from.
std::string LongLine(std::size_t n) {
  std::string s;
  for (std::size_t i = 0; i < n; ++i) s.push_back(static_cast<char>('0' + i % 10));
  return s;
}

TEST(TextInputStream, ReadsTheLinesOfAFile) {
  const std::size_t max = TextInputStream::kMaxLineBytes;
  const std::string bom = "\xEF\xBB\xBF";
  const std::string nul(1, '\0');
  struct Case {
    const char* name;
    std::string bytes;
    std::vector<std::string> lines;
  } cases[] = {
      {"LF", "145.5\n7.1\n", {"145.5", "7.1"}},
      {"CR LF", "145.5\r\n7.1\r\n", {"145.5", "7.1"}},
      {"CR", "145.5\r7.1\r", {"145.5", "7.1"}},
      {"mixed ends", "1\r\n2\r3\n4", {"1", "2", "3", "4"}},
      {"no end on the last line", "145.5\n7.1", {"145.5", "7.1"}},
      {"blank lines", "1\n\n\r\n\r2", {"1", "", "", "", "2"}},
      {"CR CR LF", "1\r\r\n2", {"1", "", "2"}},
      {"only a line end", "\n", {""}},
      {"empty file", "", {}},
      {"line of the limit", LongLine(max) + "\n2\n", {LongLine(max), "2"}},
      {"line over the limit", LongLine(max + 1) + "\n2\n", {LongLine(max), "2"}},
      {"long line, CR LF", LongLine(max + 3000) + "\r\n2\r\n", {LongLine(max), "2"}},
      {"long last line", "1\n" + LongLine(max + 5000), {"1", LongLine(max)}},
      {"byte order mark", bom + "145.5\n", {"145.5"}},
      {"byte order mark alone", bom, {}},
      {"byte order mark later", "1\n" + bom + "2\n", {"1", bom + "2"}},
      {"start of a byte order mark", bom.substr(0, 2) + "1\n", {bom.substr(0, 2) + "1"}},
      {"NUL inside a line", "1" + nul + "2\n" + nul + "\n3", {"1" + nul + "2", nul, "3"}},
  };
  TempFolder dir;
  for (const auto& c : cases) {
    dir.Write("list.txt", c.bytes);
    auto in = TextInputStream::Open(dir.File("list.txt"));
    ASSERT_NE(in, nullptr) << c.name;
    EXPECT_EQ(ReadAllLines(*in), c.lines) << c.name;
    EXPECT_TRUE(in->EndOfFile()) << c.name;
    EXPECT_EQ(in->ReadLine(), "") << c.name;  // reading past the end gives nothing
  }
}

// The caller holds the window while it reads, so nothing but a regular file may open: a FIFO
// would wait for a writer and a directory has no lines. Open runs aside, so that a wait shows as
// a failure instead of a hung test.
TEST(TextInputStream, OpensNothingButARegularFileAndNeverWaits) {
  TempFolder dir;
  ASSERT_EQ(::mkfifo(dir.File("fifo").c_str(), 0600), 0);
  ASSERT_EQ(::mkdir(dir.File("folder").c_str(), 0700), 0);
  for (const char* name : {"fifo", "folder", "missing"}) {
    const std::string path = dir.File(name);
    auto opening = std::async(std::launch::async, [path] { return TextInputStream::Open(path); });
    if (opening.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
      ADD_FAILURE() << name << ": Open waits";
      const int writer = ::open(path.c_str(), O_WRONLY | O_NONBLOCK);  // lets a waiting open go
      if (writer >= 0) ::close(writer);
    }
    EXPECT_EQ(opening.get(), nullptr) << name;
  }
}

}  // namespace
}  // namespace tarn::test

#include <gtest/gtest.h>

#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// The last cases: field texts are UTF-8 and count by characters, however many bytes each takes.
TEST(FromHex, TurnsAnyTextIntoOneByte) {
  WindowHarness h;
  h.BuildOnly();
  struct Case {
    const char* text;
    i64 value;
  } cases[] = {
      {"", 0},     {"8", 8},     {"a", 10},       {"A", 10},   {"e0", 224}, {"E0", 224},
      {"ff", 255}, {"a04", 160}, {"123", 18},     {"G", 0},    {"G5", 5},   {"5G", 80},
      {"0x", 0},   {" 5", 5},    {"88", 136},     {"-", 0},    {"-1", 1},   {"\xC3\xA9", 0},
      {"é5", 5},   {"5é", 80},   {"\u00A0a", 10}, {"éa4", 10}, {"€", 0},    {"1€", 16},
  };
  for (const auto& c : cases) EXPECT_EQ(h.w->FromHex(c.text), c.value) << '"' << c.text << '"';
}

TEST(FromHexDigit, LettersAThroughFAndDecimalDigits) {
  WindowHarness h;
  h.BuildOnly();
  EXPECT_EQ(h.w->FromHexDigit("f"), 15);
  EXPECT_EQ(h.w->FromHexDigit("9"), 9);
  EXPECT_EQ(h.w->FromHexDigit(""), 0);
  EXPECT_EQ(h.w->FromHexDigit("g"), 0);
}

}  // namespace
}  // namespace tarn::test

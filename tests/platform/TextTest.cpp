#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/Text.h"

namespace tarn {
namespace {

TEST(Val, TakesTheDecimalNumberAtTheStartOfTheText) {
  struct Case {
    const char* text;
    double value;
  } cases[] = {
      {"2000", 2000.0}, {"2001", 2001.0}, {"145.5", 145.5}, {"145.5 MHz", 145.5},
      {"-5", -5.0},     {"+7", 7.0},      {"  42", 42.0},   {".5", 0.5},
      {"7.", 7.0},      {"1e3", 1000.0},  {"1e", 1.0},      {"", 0.0},
      {"abc", 0.0},     {"-", 0.0},       {".", 0.0},       {"G", 0.0},
      {"0x10", 0.0},    {"inf", 0.0},     {"nan", 0.0},     {"14.195\r", 14.195},
      {"1e-999", 0.0},  {"9", 9.0},
  };
  for (const auto& c : cases) EXPECT_EQ(Val(c.text), c.value) << '"' << c.text << '"';
}

TEST(Val, OverflowGivesAnInfinityOfTheNumbersSign) {
  EXPECT_EQ(Val("1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(Val("-1e999"), -std::numeric_limits<double>::infinity());
}

TEST(Str, GivesDecimalTextWithoutFloatNoiseOrExponent) {
  struct Case {
    double value;
    const char* text;
  } cases[] = {
      {145500.0, "145500"},
      {14249.999999999998, "14250"},
      {1296100.05, "1296100.05"},
      {0.0, "0"},
      {-0.0, "0"},
      {16500000.0, "16500000"},
      {4500000.0, "4500000"},
      {7.1, "7.1"},
      {99999999999.0, "99999999999"},
      {-2.5, "-2.5"},
  };
  for (const auto& c : cases) EXPECT_EQ(Str(c.value), c.text) << c.value;
  EXPECT_EQ(Str(i64{136}), "136");
  EXPECT_EQ(Str(i64{-3}), "-3");
}

TEST(ChrB, KeepsTheLowEightBitsSoAFrameNeverChangesLength) {
  EXPECT_EQ(ChrB(0xFE), std::string(1, '\xFE'));
  EXPECT_EQ(ChrB(256), std::string(1, '\0'));
  EXPECT_EQ(ChrB(0x1A0), std::string(1, '\xA0'));
  EXPECT_EQ(ChrB(-1), std::string(1, '\xFF'));
  EXPECT_EQ(AscB(ChrB(253)), 253);
  EXPECT_EQ(AscB(""), 0);
}

TEST(TruncToInt, NeverOverflows) {
  EXPECT_EQ(TruncToInt(2.9), 2);
  EXPECT_EQ(TruncToInt(-2.9), -2);
  EXPECT_EQ(TruncToInt(std::nan("")), 0);
  EXPECT_EQ(TruncToInt(1e300), std::numeric_limits<i64>::max());
  EXPECT_EQ(TruncToInt(-1e300), std::numeric_limits<i64>::min());
  EXPECT_EQ(Floor(-0.5), -1);
}

TEST(ByteStrings, CountFromOneAndStayInside) {
  EXPECT_EQ(Mid("abcdef", 2, 3), "bcd");
  EXPECT_EQ(Mid("abc", 3, 10), "c");
  EXPECT_EQ(Mid("abc", 4, 1), "");
  EXPECT_EQ(Mid("abc", 0, 1), "");
  EXPECT_EQ(Left("a04", 2), "a0");
  EXPECT_EQ(Right("a0", 1), "0");
  EXPECT_EQ(Right("", 1), "");
  EXPECT_EQ(Uppercase("e0x"), "E0X");
}

TEST(HexText, TwoUpperCaseDigitsAndASeparatorPerByte) {
  EXPECT_EQ(HexText(std::string("\xFE\x00\xFD", 3)), "FE_00_FD_");
  EXPECT_EQ(HexText("\x0A"), "0A_");
  EXPECT_EQ(HexText("\xA0\xFF"), "A0_FF_");
  EXPECT_EQ(HexText(""), "");
}

TEST(Utf8, CountsCharactersNotBytes) {
  EXPECT_EQ(Utf8Length("abc"), 3);
  EXPECT_EQ(Utf8Length("\xC3\xA9t\xC3\xA9"), 3);  // été
  EXPECT_EQ(Utf8Offset("\xC3\xA9t\xC3\xA9", 1), 2u);
  EXPECT_EQ(Utf8Offset("abc", 10), 3u);
}

}  // namespace
}  // namespace tarn

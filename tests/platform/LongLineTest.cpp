// A scan list line is read whole before Val sees it.
#include <gtest/gtest.h>

#include "platform/Text.h"
#include "platform/TextFiles.h"
#include "support/TempFolder.h"

TEST(TextInputStream, ValSeesAllOfALineOfOverAThousandBytes) {
  const tarn::test::TempFolder dir;
  dir.Write("list.txt", std::string(1100, ' ') + "7.1");
  EXPECT_EQ(tarn::Val(tarn::TextInputStream::Open(dir.File("list.txt"))->ReadLine()), 7.1);
}

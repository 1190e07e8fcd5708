// A scan list line reaches Val whole: a number after a thousand blanks is still that number.
#include <gtest/gtest.h>

#include "platform/TextFiles.h"
#include "support/TempFolder.h"

TEST(TextInputStream, ReadsALineOfOverAThousandBytesWhole) {
  const tarn::test::TempFolder dir;
  dir.Write("list.txt", std::string(1100, ' ') + "7.1");
  EXPECT_EQ(tarn::TextInputStream::Open(dir.File("list.txt"))->ReadLine().size(), 1103u);
}

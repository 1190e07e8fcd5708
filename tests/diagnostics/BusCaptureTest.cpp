// SPDX-License-Identifier: GPL-3.0-or-later
// The capture's own framing, which the end-to-end run with tshark cannot steer: how reads are cut
// and stamped, and a write that fails.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <tuple>
#include <vector>

#include "diagnostics/BusCapture.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

using Record = std::tuple<std::uint32_t, BusCapture::Micros, std::string>;  // flags, time, bytes

// The enhanced packet blocks of a pcapng file, in order.
std::vector<Record> Records(const std::string& file) {
  const auto u32 = [&file](std::size_t at) {
    std::uint32_t value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
  };
  std::vector<Record> out;
  for (std::size_t at = 0; at + 12 <= file.size(); at += u32(at + 4)) {
    if (u32(at) != 6) continue;
    const std::uint32_t length = u32(at + 20);
    out.emplace_back(u32(at + 28 + (length + 3) / 4 * 4 + 4),
                     (std::int64_t{u32(at + 12)} << 32) | u32(at + 16),
                     file.substr(at + 28, length));
  }
  return out;
}

// A frame split over reads is one record stamped with its first byte's time; bytes outside frames
// and a frame cut by a jam code or by the line closing are records of their own. The moment the
// line became readable stamps only the first bytes of the next read.
TEST(BusCapture, FramesEachDirectionAcrossReads) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  BusCapture::Micros now = 0;
  {
    BusCapture capture(pipe[1], true, "test", [&now] { return now; });
    now = 90, capture.Readable();
    now = 100, capture.Read(Bytes({0x01, 0xFE}));
    now = 200, capture.Read(Bytes({0xFE, 0xE0, 0x08, 0x03, 0x00}));
    now = 250, capture.Wrote(Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
    now = 300, capture.Read(Bytes({0x50, 0xFD, 0xFE, 0xFE, 0xE0, 0x08, 0xFC, 0x07, 0xFE, 0xFE}));
    now = 400, capture.Read(Bytes({0xE0}));
    capture.LineClosed();
  }
  const std::vector<Record> expected = {
      {1, 90, Bytes({0x01})},
      {2, 250, Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD})},
      {1, 100, Bytes({0xFE, 0xFE, 0xE0, 0x08, 0x03, 0x00, 0x50, 0xFD})},
      {1, 300, Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFC})},
      {1, 300, Bytes({0x07})},
      {1, 300, Bytes({0xFE, 0xFE, 0xE0})},
  };
  std::string file(65536, '\0');
  file.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(pipe[0], file.data(), 65536))));
  EXPECT_EQ(Records(file), expected);
  ::close(pipe[0]);
}

// The reader gone: told once, nothing more is written, and the line's bytes go on being taken.
TEST(BusCapture, AFailedWriteIsToldOnceAndEndsTheCapture) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  BusCapture capture(pipe[1], true, "test", [] { return 0; });
  std::vector<std::string> told;
  capture.failed = [&told](const std::string& why) { told.push_back(why); };
  ::close(pipe[0]);
  capture.Wrote(Bytes({0xFE, 0xFE, 0x08, 0xE0, 0x03, 0xFD}));
  capture.Read(Bytes({0xFE, 0xFE, 0xE0, 0x08, 0xFB, 0xFD}));
  EXPECT_EQ(told, std::vector<std::string>{std::strerror(EPIPE)});
  EXPECT_TRUE(capture.Failed());
}

}  // namespace
}  // namespace tarn::test

// SPDX-License-Identifier: GPL-3.0-or-later
// CI-V protocol bytes, named once.
//
// A frame on the bus: FE FE to from command data... FD. No length, no checksum: the end byte alone
// closes a frame. The jam code and the two answer codes mean something wherever they stand.
#pragma once

#include <cstdint>

namespace tarn::civ {

inline constexpr std::int64_t kPreamble = 0xFE;
inline constexpr std::int64_t kEnd = 0xFD;
inline constexpr std::int64_t kJam = 0xFC;
inline constexpr std::int64_t kAck = 0xFB;  // command accepted
inline constexpr std::int64_t kNak = 0xFA;  // command refused

inline constexpr std::int64_t kCmdReadFreq = 0x03;
inline constexpr std::int64_t kCmdReadMode = 0x04;
inline constexpr std::int64_t kCmdSetFreq = 0x05;
inline constexpr std::int64_t kCmdSetMode = 0x06;

}  // namespace tarn::civ

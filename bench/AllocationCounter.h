// SPDX-License-Identifier: GPL-3.0-or-later
// Counts the heap allocations of the whole benchmark program, so a benchmark can report how many a
// piece of work makes.
#pragma once

#include <cstdint>

namespace tarn::test {

std::uint64_t AllocationCount();

}  // namespace tarn::test

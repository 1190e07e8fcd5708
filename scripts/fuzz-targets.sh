# SPDX-License-Identifier: GPL-3.0-or-later
# The fuzz targets and their input bounds, for the scripts that run them (sourced, not run).
fuzz_targets=(receive scanlist fields)

# Prints libFuzzer's length bound for a target, if it has one. Longer inputs add nothing there but
# time: a frame past the 257-byte bound, a list of many lines.
fuzz_max_len() {
  case $1 in
    receive) echo -max_len=320 ;;
    scanlist) echo -max_len=128 ;;
  esac
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Files of the window's logic: a line reader for the scan list and an appender for the traces.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace tarn {

// Reads a text file line by line. A line ends at LF, CR LF or CR; a line end at the very end of
// the file makes no extra empty line. Only the first kMaxLineBytes of a line are kept and the rest
// of such a line is skipped: the bound is there for a file with no line ends at all, which must not
// take the memory of its size, and lies far beyond any real line, so that Val always sees the
// whole of one (a number after a thousand blanks is still that number). Only regular files open,
// and a UTF-8 byte order mark at the start is skipped.
class TextInputStream {
 public:
  static constexpr std::size_t kMaxLineBytes = 1024 * 1024;

  static std::unique_ptr<TextInputStream> Open(const std::string& path);  // nothing on failure
  ~TextInputStream();
  TextInputStream(const TextInputStream&) = delete;
  TextInputStream& operator=(const TextInputStream&) = delete;

  bool EndOfFile();
  std::string ReadLine();
  void Close();

 private:
  explicit TextInputStream(std::FILE* file) : file_(file) {}
  int Peek();
  void SkipByteOrderMark();
  std::FILE* file_;
};

// Appends bytes to a file, creating it when missing; opened and closed within the call. False
// when the file could not be opened or fully written.
bool AppendToFile(const std::string& path, std::string_view bytes);

}  // namespace tarn

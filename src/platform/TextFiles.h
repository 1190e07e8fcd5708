// Files of the window's logic: a line reader for the scan list and an appender for the traces.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace tarn {

// Reads a text file line by line. A line ends at LF, CR LF or CR; a line end at the very end of
// the file makes no extra empty line. Only the first kMaxLineBytes of a line are kept (a line is
// one number, and a file without line ends must not take the memory of its size); the rest of
// such a line is skipped. Only regular files open, and a UTF-8 byte order mark at the start is
// skipped.
class TextInputStream {
 public:
  static constexpr std::size_t kMaxLineBytes = 1024;

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

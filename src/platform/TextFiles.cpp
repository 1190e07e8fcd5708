// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TextFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarn {

// Regular files only: a FIFO would block the open and a device such as /dev/zero would never end,
// and the caller holds the window while it reads. O_NONBLOCK keeps the open of a FIFO from waiting
// for a writer; on a regular file it changes nothing.
std::unique_ptr<TextInputStream> TextInputStream::Open(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return nullptr;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    return nullptr;
  }
  std::FILE* f = ::fdopen(fd, "rb");
  if (!f) {
    ::close(fd);
    return nullptr;
  }
  auto stream = std::unique_ptr<TextInputStream>(new TextInputStream(f));
  stream->SkipByteOrderMark();
  return stream;
}

// Editors on some systems start a UTF-8 file with EF BB BF; read as text it would turn the first
// line into no number, and the radio would be sent 0 MHz.
void TextInputStream::SkipByteOrderMark() {
  static constexpr unsigned char kMark[] = {0xEF, 0xBB, 0xBF};
  for (unsigned char expected : kMark) {
    if (std::getc(file_) != expected) {
      std::rewind(file_);
      return;
    }
  }
}

TextInputStream::~TextInputStream() {
  Close();
}

void TextInputStream::Close() {
  if (file_) std::fclose(file_);
  file_ = nullptr;
}

int TextInputStream::Peek() {
  if (!file_) return EOF;
  const int c = std::getc(file_);
  if (c != EOF) std::ungetc(c, file_);
  return c;
}

bool TextInputStream::EndOfFile() {
  return Peek() == EOF;
}

std::string TextInputStream::ReadLine() {
  std::string line;
  if (!file_) return line;
  for (int c = std::getc(file_); c != EOF; c = std::getc(file_)) {
    if (c == '\n') break;
    if (c == '\r') {
      const int next = std::getc(file_);
      if (next != '\n' && next != EOF) std::ungetc(next, file_);
      break;
    }
    if (line.size() < kMaxLineBytes) line.push_back(static_cast<char>(c));
  }
  return line;
}

bool AppendToFile(const std::string& path, std::string_view bytes) {
  std::FILE* f = std::fopen(path.c_str(), "ab");
  if (!f) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
  const bool closed = std::fclose(f) == 0;
  return written && closed;
}

}  // namespace tarn

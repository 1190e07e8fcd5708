#include "platform/TextFiles.h"

namespace tarn {

std::unique_ptr<TextInputStream> TextInputStream::Open(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return nullptr;
  return std::unique_ptr<TextInputStream>(new TextInputStream(f));
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

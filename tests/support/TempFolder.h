// SPDX-License-Identifier: GPL-3.0-or-later
// A fresh folder under the system's temporary folder, or under another, removed with everything in
// it.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tarn::test {

class TempFolder {
 public:
  explicit TempFolder(const std::filesystem::path& under = std::filesystem::temp_directory_path()) {
    std::string pattern = (under / "tarnline-XXXXXX").string();
    path_ = mkdtemp(pattern.data()) ? pattern : std::string();
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ec);
    std::filesystem::remove_all(path_, ec);
  }
  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(File(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ifstream in(File(name), std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  bool Exists(const std::string& name) const { return std::filesystem::exists(File(name)); }

 private:
  std::string path_;
};

}  // namespace tarn::test

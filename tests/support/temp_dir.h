// A temporary folder removed at the end of the test, with helpers to write files.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace lk::test {

class TempDir {
 public:
  TempDir() {
    std::string tmpl = (std::filesystem::temp_directory_path() / "lktest-XXXXXX").string();
    char* made = ::mkdtemp(tmpl.data());
    path_ = made ? std::filesystem::path(made) : std::filesystem::temp_directory_path();
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  // Writes bytes as they are (no newline translation); creates parent folders.
  std::filesystem::path Write(const std::string& name, const std::string& bytes) const {
    std::filesystem::path p = path_ / name;
    std::filesystem::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary);
    out << bytes;
    return p;
  }

  std::string Read(const std::string& name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace lk::test

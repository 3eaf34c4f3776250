#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

// A folder of its own for one test, so that tests may run side by side; removed with its owner. The
// name holds what users' paths hold: a blank, a percent sign, a colon.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = std::filesystem::temp_directory_path() / "tsx test: 100% XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder " + name);
    path_ = name;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

// A locale such as "de_DE" of the test's own making, so that a test does not depend on those that
// the machine has. While it lives it is the process's, of the C library and for its messages.
class MadeLocale {
 public:
  explicit MadeLocale(const std::string& name) {
    if (::mkdtemp(folder_.data()) == nullptr) throw std::runtime_error("no folder " + folder_);
    // It warns by its exit status; whether there is a locale shows below.
    const std::string command = "localedef -c -i '" + name + "' -f UTF-8 '" + folder_ + "/" + name +
                                ".UTF-8' >/dev/null 2>&1";
    const int status = std::system(command.c_str());
    ::setenv("LOCPATH", folder_.c_str(), 1);
    if (std::setlocale(LC_ALL, (name + ".UTF-8").c_str()) == nullptr) {
      end();
      throw std::runtime_error("localedef made no locale " + name + ", status " +
                               std::to_string(status) + "; is the package locales installed?");
    }
  }
  MadeLocale(const MadeLocale&) = delete;
  MadeLocale& operator=(const MadeLocale&) = delete;
  ~MadeLocale() {
    std::setlocale(LC_ALL, "C");
    end();
  }

 private:
  void end() {
    ::unsetenv("LOCPATH");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  // Without a colon, which would part the list that LOCPATH is.
  std::string folder_ = std::filesystem::temp_directory_path() / "tsx_locale_XXXXXX";
};

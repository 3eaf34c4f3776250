#include "tools/command_line/product_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/os_error.h"

namespace {

namespace fs = std::filesystem;

constexpr int deepest = 3;
constexpr std::size_t most_entries = 20000;  // of folders that are looked at, so that it ends soon
constexpr std::size_t most_listed = 10;

// One level of folders, below the one that was named.
struct Level {
  std::vector<fs::path> products;
  std::vector<fs::path> others;  // files of a known ending that are not recognised
  std::vector<fs::path> folders;
  std::error_code unread;  // why a folder could not be read
};

// False when that would be more entries than are looked at.
bool look_into(const fs::path& folder, const ProductFiles& files, std::size_t& entries,
               Level& level) {
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    if (++entries > most_entries) return false;
    std::error_code ignored;
    if (entry->is_directory(ignored)) {
      level.folders.push_back(entry->path());
    } else if (entry->is_regular_file(ignored) && files.may_be(entry->path())) {
      (files.is_recognised(entry->path()) ? level.products : level.others).push_back(entry->path());
    }
  }
  if (failed) level.unread = failed;
  return true;
}

std::string list_of(std::vector<fs::path> files) {
  std::sort(files.begin(), files.end());
  std::string text;
  for (std::size_t i = 0; i < std::min(files.size(), most_listed); ++i) {
    text += "\n  " + files[i].string();
  }
  if (files.size() > most_listed) {
    text += "\n  and " + std::to_string(files.size() - most_listed) + " more";
  }
  return text;
}

std::string find_in_folder(const std::string& path, const ProductFiles& files) {
  std::size_t entries = 0;
  std::vector<fs::path> others;
  std::vector<fs::path> folders = {path};
  for (int depth = 0; depth <= deepest && !folders.empty(); ++depth) {
    Level level;
    for (const fs::path& folder : folders) {
      if (look_into(folder, files, entries, level)) continue;
      throw gridkit::Error(path +
                           ": too many files to look through; name the product's own folder or its "
                           "annotation");
    }
    // The folder that was named must be readable; those in it are passed by.
    if (depth == 0 && level.unread) {
      throw gridkit::Error(path +
                           ": cannot be read: " + gridkit::os_error_in_words(level.unread.value()));
    }
    if (level.products.size() == 1) return level.products.front().string();
    if (!level.products.empty()) {
      throw gridkit::Error(path + ": holds several products; name one of" +
                           list_of(std::move(level.products)));
    }
    others.insert(others.end(), level.others.begin(), level.others.end());
    folders = std::move(level.folders);
  }
  if (others.empty()) throw gridkit::Error(path + ": the folder holds no product");
  throw gridkit::Error(path + ": the folder holds no product; of none of the known formats are" +
                       list_of(std::move(others)));
}

}  // namespace

std::string find_product(const std::string& path, const ProductFiles& files) {
  std::error_code failed;
  const auto status = fs::status(path, failed);
  if (status.type() == fs::file_type::not_found) throw gridkit::Error(path + ": no such file");
  if (failed) {
    throw gridkit::Error(path + ": cannot be read: " + gridkit::os_error_in_words(failed.value()));
  }
  if (fs::is_directory(status)) return find_in_folder(path, files);
  if (!fs::is_regular_file(status)) {
    throw gridkit::Error(path + ": not a regular file; give a product's annotation or its folder");
  }
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    throw gridkit::Error(path + ": cannot be read: " + gridkit::os_error_in_words(errno));
  }
  ::close(file);
  return path;
}

bool has_ending(const std::filesystem::path& file, const std::string& ending) {
  const std::string own = file.extension().string();
  return std::equal(own.begin(), own.end(), ending.begin(), ending.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

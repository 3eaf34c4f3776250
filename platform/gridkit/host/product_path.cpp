#include "gridkit/product_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/os_error.h"

namespace gridkit {

namespace {

namespace fs = std::filesystem;

constexpr int deepest = 3;
constexpr std::size_t most_entries = 20000;  // of folders that are looked at, so that it ends soon
constexpr std::size_t most_listed = 10;

// What unpacks files of a kind, by the ending of their names.
struct Packing {
  std::string_view ending;
  std::string_view command;
};
constexpr std::array<Packing, 8> packings = {{{".tar", "tar -xf"},
                                              {".tar.gz", "tar -xf"},
                                              {".tgz", "tar -xf"},
                                              {".tar.bz2", "tar -xf"},
                                              {".tbz2", "tar -xf"},
                                              {".tar.xz", "tar -xf"},
                                              {".txz", "tar -xf"},
                                              {".zip", "unzip"}}};

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return text;
}

// A path as a word of a shell's command.
std::string shell_word(const std::string& path) {
  const auto is_plain = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_./=+,:@%-").find(c) != std::string_view::npos;
  };
  if (std::all_of(path.begin(), path.end(), is_plain) && !path.starts_with('-')) return path;
  std::string quoted;
  for (const char c : path) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return (path.starts_with('-') ? "./'" : "'") + quoted + '\'';
}

// The command that unpacks a file, empty for one whose name does not tell that it is packed.
std::string unpacking_command(const fs::path& file) {
  const std::string name = lower(file.filename().string());
  for (const auto& [ending, command] : packings) {
    if (name.ends_with(ending)) return std::string(command) + ' ' + shell_word(file.string());
  }
  return {};
}

// One level of folders, below the one that was named.
struct Level {
  std::vector<fs::path> products;
  std::vector<fs::path> others;  // files of a known ending that are not recognised
  std::vector<fs::path> packed;
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
    } else if (!entry->is_regular_file(ignored)) {
      continue;
    } else if (!unpacking_command(entry->path()).empty()) {
      level.packed.push_back(entry->path());
    } else if (files.may_be(entry->path())) {
      (files.is_recognised(entry->path()) ? level.products : level.others).push_back(entry->path());
    }
  }
  if (failed) level.unread = failed;
  return true;
}

// The first files, each on a line of its own as `line` puts it.
template <class Line>
std::string list_of(std::vector<fs::path> files, Line line) {
  std::sort(files.begin(), files.end());
  std::string text;
  for (std::size_t i = 0; i < std::min(files.size(), most_listed); ++i) {
    text += "\n  " + line(files[i]);
  }
  if (files.size() > most_listed) {
    text += "\n  and " + std::to_string(files.size() - most_listed) + " more";
  }
  return text;
}

std::string list_of(std::vector<fs::path> files) {
  return list_of(std::move(files), [](const fs::path& file) { return file.string(); });
}

std::string find_in_folder(const std::string& path, const ProductFiles& files) {
  std::size_t entries = 0;
  std::vector<fs::path> others;
  std::vector<fs::path> packed;
  std::vector<fs::path> folders = {path};
  for (int depth = 0; depth <= deepest && !folders.empty(); ++depth) {
    Level level;
    for (const fs::path& folder : folders) {
      if (look_into(folder, files, entries, level)) continue;
      throw Error(path +
                  ": too many files to look through; name the product's own folder or its "
                  "annotation");
    }
    // The folder that was named must be readable; those in it are passed by.
    if (depth == 0 && level.unread) {
      throw Error(path + ": cannot be read: " + os_error_in_words(level.unread.value()));
    }
    if (level.products.size() == 1) return level.products.front().string();
    if (!level.products.empty()) {
      // First, as the list takes the products away.
      const std::string several = files.what_several_are(level.products);
      throw Error(std::string(path)
                      .append(": holds ")
                      .append(several)
                      .append("; name one of")
                      .append(list_of(std::move(level.products))));
    }
    others.insert(others.end(), level.others.begin(), level.others.end());
    packed.insert(packed.end(), level.packed.begin(), level.packed.end());
    folders = std::move(level.folders);
  }
  if (!packed.empty()) {
    throw Error(path + ": the folder holds no product that is unpacked; unpack one first" +
                list_of(std::move(packed), unpacking_command));
  }
  if (others.empty()) throw Error(path + ": the folder holds no product");
  throw Error(path + ": the folder holds no product; of none of the known formats are" +
              list_of(std::move(others)));
}

}  // namespace

std::string find_product(const std::string& path, const ProductFiles& files) {
  std::error_code failed;
  const auto status = fs::status(path, failed);
  if (status.type() == fs::file_type::not_found) throw Error(path + ": no such file");
  if (failed) {
    throw Error(path + ": cannot be read: " + os_error_in_words(failed.value()));
  }
  if (fs::is_directory(status)) return find_in_folder(path, files);
  if (!fs::is_regular_file(status)) {
    throw Error(path + ": not a regular file; give a product's annotation or its folder");
  }
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    throw Error(path + ": cannot be read: " + os_error_in_words(errno));
  }
  ::close(file);
  refuse_packed(path);
  return path;
}

void refuse_packed(const std::string& path) {
  const std::string command = unpacking_command(path);
  if (command.empty()) return;
  throw Error(path + ": still packed; unpack it first: " + command);
}

bool has_ending(const std::filesystem::path& file, const std::string& ending) {
  return lower(file.extension().string()) == lower(ending);
}

}  // namespace gridkit

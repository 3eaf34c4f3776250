#include "gridkit/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include <unistd.h>

#include "gridkit/os_error.h"
#include "gridkit/services/fail.h"
#include "gridkit/services/open_scope.h"
#include "gridkit/services/regular_file.h"

namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

bool is_mode(std::string_view mode) {
  if (mode.empty() || mode.size() > 3) return false;
  if (std::string_view("rwa").find(mode[0]) == std::string_view::npos) return false;
  const std::string_view rest = mode.substr(1);
  return rest.find_first_not_of("b+") == std::string_view::npos &&
         (rest.size() < 2 || rest[0] != rest[1]);
}

}  // namespace

struct gkf_File {
  std::unique_ptr<std::FILE, Closer> file;
};

int32_t gkf_FileExists(const char* path, gke_Report**) {
  return path != nullptr && ::access(path, F_OK) == 0 ? 1 : 0;
}

gkf_File* gkf_Open(const char* path, const char* mode, gke_Report** err, int32_t) try {
  constexpr const char* word = "gkf_Open";
  if (path == nullptr || mode == nullptr || !is_mode(mode)) {
    gridkit::fail(err, word, {"no path, or no mode that is known"});
    return nullptr;
  }
  if (const std::string refusal = gridkit::refusal_to_open(path); !refusal.empty()) {
    gridkit::fail(err, word, {refusal});
    return nullptr;
  }
  const bool for_writing = std::strcmp(mode, "r") != 0 && std::strcmp(mode, "rb") != 0;
  gridkit::Descriptor opened = gridkit::open_regular_file(path, for_writing);
  if (!opened.is_open()) {
    const int reason = errno;
    gridkit::fail(err, word, {gridkit::shown_path(path), ": ", gridkit::os_error_in_words(reason)});
    return nullptr;
  }
  std::unique_ptr<gkf_File> file(new (std::nothrow) gkf_File);
  if (file != nullptr) file->file.reset(::fdopen(opened.get(), "r"));
  if (file == nullptr || file->file == nullptr) {
    gridkit::fail(err, word, {path, ": out of memory"});
    return nullptr;
  }
  opened.release();
  return file.release();
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkf_Open", {"out of memory"});
  return nullptr;
}

void gkf_Close(gkf_File* file, gke_Report** err) try {
  if (file == nullptr) return;
  if (file->file != nullptr && std::fclose(file->file.release()) != 0) {
    gridkit::fail(err, "gkf_Close", {gridkit::os_error_in_words(errno)});
    return;
  }
  delete file;
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkf_Close", {"out of memory"});
}

void gkf_Fgets(char* buffer, int32_t size, gkf_File* file, gke_Report** err) try {
  constexpr const char* word = "gkf_Fgets";
  if (buffer == nullptr || size < 1) {
    gridkit::fail(err, word, {"no room for a line"});
    return;
  }
  buffer[0] = '\0';
  if (file == nullptr) {
    gridkit::fail(err, word, {"no file"});
    return;
  }
  if (std::fgets(buffer, size, file->file.get()) != nullptr) return;
  buffer[0] = '\0';
  const int reason = errno;
  const bool at_end = std::feof(file->file.get()) != 0;
  gridkit::fail(err, word, {at_end ? "the end of the file" : gridkit::os_error_in_words(reason)});
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkf_Fgets", {"out of memory"});
}

// The files and streams of the tests' toolkit: they live in memory.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "gridkit/file.h"
#include "support/fake_parts.h"
#include "support/fake_toolkit.h"

using namespace fake;

struct gkf_File {
  std::string path;
  std::size_t position = 0;
};
struct gkf_Stream {
  std::string path;
  std::size_t position = 0;
  bool at_end = false;
};
int32_t gkf_FileExists(const char* path, gke_Report** err) {
  if (failed("gkf_FileExists", err)) return 0;
  const auto told = toolkit().exists.find(path);
  if (told != toolkit().exists.end()) return told->second;
  return toolkit().files.contains(path) ? 1 : 0;
}
gkf_File* gkf_Open(const char* path, const char* mode, gke_Report** err, int32_t) {
  toolkit().modes.emplace_back(mode);
  if (failed("gkf_Open", err)) return nullptr;
  return lend(new gkf_File{path}, "file");
}
void gkf_Close(gkf_File* file, gke_Report** err) {
  toolkit().log.emplace_back("gkf_Close");
  if (failed("gkf_Close", err) || file == nullptr) return;
  take_back(file);
}
void gkf_Fgets(char* buffer, int32_t size, gkf_File* file, gke_Report** err) {
  if (failed("gkf_Fgets", err)) return;
  const std::string& bytes = toolkit().files[file->path];
  if (file->position >= bytes.size()) {
    report("gkf_Fgets", err, "the end");
    return;
  }
  const auto end = std::min(bytes.find('\n', file->position), bytes.size() - 1) + 1;
  const auto count =
      std::min<std::size_t>(end - file->position, static_cast<std::size_t>(size - 1));
  std::snprintf(buffer, count + 1, "%s", bytes.c_str() + file->position);
  file->position += count;
}
gkf_Stream* gkf_fopen(const char* path, const char* mode) {
  toolkit().log.push_back(std::string("gkf_fopen ") + (path != nullptr ? path : "(null)") + ' ' +
                          mode);
  if (fails("gkf_fopen") || path == nullptr || !toolkit().files.contains(path)) return nullptr;
  return lend(new gkf_Stream{path}, "stream");
}
int32_t gkf_fclose(gkf_Stream* stream) {
  toolkit().log.emplace_back("gkf_fclose");
  if (fails("gkf_fclose") || stream == nullptr) return -1;
  take_back(stream);
  return 0;
}
int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t) {
  toolkit().seeks.push_back(offset);
  if (fails("gkf_fseeko") || stream == nullptr) return -1;
  stream->position = static_cast<std::size_t>(offset);
  stream->at_end = false;
  return 0;
}
size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream) {
  if (toolkit().endless) {
    std::memset(buffer, 0, size * count);
    return count;
  }
  const bool fails_now = fails("gkf_fread");
  const std::string& bytes = toolkit().files[stream->path];
  const std::size_t left = bytes.size() - std::min(stream->position, bytes.size());
  std::size_t items = std::min(count, left / size);
  stream->at_end = items < count;
  const auto most = toolkit().short_reads_of;
  if (fails_now || (most >= 0 && toolkit().calls["gkf_fread"] > 1)) {
    items = fails_now ? 0 : std::min(items, static_cast<std::size_t>(most));
    stream->at_end = false;
  }
  std::memcpy(buffer, bytes.data() + std::min(stream->position, bytes.size()), items * size);
  stream->position += items * size;
  return items;
}
int32_t gkf_feof(gkf_Stream* stream) {
  return !fails("gkf_feof") && stream->at_end ? 1 : 0;
}

#include "tools/command_line/existing_output.h"

#include <filesystem>
#include <system_error>

#include "gridkit/error.h"

void check_existing(const std::string& path, bool overwrite) {
  std::error_code ignored;
  if (overwrite || !std::filesystem::is_regular_file(path, ignored)) return;
  throw gridkit::Error(path + ": exists already; --overwrite replaces it");
}

#include "tools/annotation/rewrite.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "tools/annotation/annotation_file.h"
#include "tools/annotation/product_writer.h"

namespace {

template <class Root>
lmx::elmx_error write(Root& root, std::ostream& out) {
  if (root.getchosen() != Root::e_level1Product) return root.marshal(out);
  return write_product(std::as_const(root).get_level1Product(), out);
}

}  // namespace

std::string rewrite_annotation(const std::string& source, const std::string& schema,
                               const std::string& target) {
  const std::string part = target + ".part";
  std::ofstream out(part, std::ios::binary | std::ios::trunc);
  if (!out.is_open()) return target + ": cannot be written";
  const lmx::elmx_error error = with_root(schema, [&](auto& root) {
    root.unmarshal(source.c_str());
    return write(root, out);
  });
  out.close();
  std::error_code failed;
  if (error == 0 && out) std::filesystem::rename(part, target, failed);
  if (error == 0 && out && !failed) return {};
  std::error_code ignored;
  std::filesystem::remove(part, ignored);
  return target + ": cannot be written whole";
}

#include "tools/annotation/rewrite.h"

#include <cerrno>
#include <fstream>
#include <utility>

#include "gridkit/error.h"
#include "gridkit/os_error.h"
#include "gridkit/partial_file.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/product_writer.h"

namespace {

template <class Root>
lmx::elmx_error write(Root& root, std::ostream& out) {
  if (root.getchosen() != Root::e_level1Product) return root.marshal(out);
  return write_product(std::as_const(root).get_level1Product(), out);
}

}  // namespace

void rewrite_annotation(const std::string& source, const std::string& schema,
                        const std::string& target, bool overwrite) {
  gridkit::PartialFile file(target,
                            overwrite ? gridkit::Existing::replace : gridkit::Existing::refuse);
  std::ofstream out(file.path(), std::ios::binary | std::ios::trunc);
  errno = 0;
  const lmx::elmx_error error = with_root(schema, [&](auto& root) {
    root.unmarshal(source.c_str());
    return write(root, out);
  });
  out.close();
  if (!out) {
    throw gridkit::Error(target + ": cannot be written: " + gridkit::os_error_in_words(errno));
  }
  if (error != 0) throw gridkit::Error(target + ": cannot be written: " + lmx::meaning(error));
  file.complete();
}

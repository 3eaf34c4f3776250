#include "tools/annotation/rewrite.h"

#include <cerrno>
#include <fstream>
#include <utility>

#include "binding/writable.h"
#include "gridkit/error.h"
#include "gridkit/os_error.h"
#include "gridkit/partial_file.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/annotation/product_writer.h"

namespace {

template <class Root>
void read(Root& root, const std::string& source) {
  if (root.unmarshal(source.c_str()) != 0) {
    throw gridkit::Error(source + ": changed while it was read");
  }
  if (const auto found = binding::find_unwritable(Root::s_description, &root, "")) {
    throw gridkit::Error(source + ": " + found->path + ": " + found->why +
                         ", so it cannot be written anew");
  }
}

template <class Root>
lmx::elmx_error write(const Root& root, std::ostream& out) {
  if (root.getchosen() != Root::e_level1Product) return root.marshal(out);
  return write_product(root.get_level1Product(), out);
}

}  // namespace

void rewrite_annotation(const std::string& source, const std::string& schema,
                        const std::string& target, bool overwrite) {
  gridkit::PartialFile file(target,
                            overwrite ? gridkit::Existing::replace : gridkit::Existing::refuse);
  std::ofstream out;
  const lmx::elmx_error error = with_root(schema, [&](auto& root) {
    read(root, source);
    errno = 0;
    out.open(file.path(), std::ios::binary | std::ios::trunc);
    return write(std::as_const(root), out);
  });
  out.close();
  if (!out) {
    throw gridkit::Error(target + ": cannot be written: " + gridkit::os_error_in_words(errno));
  }
  if (error != 0) throw gridkit::Error(target + ": cannot be written: " + lmx::meaning(error));
  // Text can grow past what a reader takes when its markup is escaped.
  if (const CheckResult written = check_annotation(file.path(), schema); written.error != 0) {
    throw gridkit::Error(target + ": cannot be written: " + written.path +
                         " would not be read again: " + written.message);
  }
  file.complete();
}

// Binding of annotations in each version, and the way back: what binds is either told to be
// unwritable, and where, or is written and binds again as the same document. The first byte picks
// the version, the rest is the document.

#include <cstdint>
#include <string>

#include "binding/writable.h"
#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

namespace {

template <class Root>
std::string written(const Root& root) {
  std::string text;
  expect(root.marshal(&text) == lmx::error_none, "what binds can be written");
  return text;
}

template <class Root>
void bind(std::string_view document) {
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  Root root;
  const lmx::elmx_error error = root.unmarshal(reader);
  expect((error != lmx::error_none) == (reader.diagnostic() != nullptr),
         "every fault has a diagnostic and only faults have one");
  if (error != lmx::error_none) return;
  if (const auto found = binding::find_unwritable(Root::s_description, &root, "")) {
    expect(found->path.starts_with('/') && !found->why.empty(), "what is unwritable has its place");
    return;
  }
  const std::string first = written(root);
  lmx::c_xml_reader_memory again(first.data(), first.size());
  Root copy;
  expect(copy.unmarshal(again) == lmx::error_none, "what is written binds");
  expect(written(copy) == first, "what binds again is the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input(data, size);
  switch (input.byte() % 3) {
    case 0:
      bind<version34::c_version34>(input.rest());
      break;
    case 1:
      bind<version35::c_version35>(input.rest());
      break;
    default:
      bind<version40::c_version40>(input.rest());
  }
  return 0;
}

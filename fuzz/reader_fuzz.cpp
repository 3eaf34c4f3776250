// The pull reader by itself, driven as no class would: the input's first part picks the calls, the
// rest is the document, read in chunks of a few bytes.

#include <cstdint>
#include <string>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "lmx/reader.h"

namespace {

// Reads the element the reader stands on, children and all; false at a fault.
bool read_element(lmx::c_xml_reader& reader, Bytes& calls, int depth) {
  expect(depth <= 256, "nesting is bounded");
  lmx::c_xml_reader_local local(&reader);
  const lmx::c_string_stack_node node(reader.element_name_stack, reader.current_name);
  lmx::elmx_error error = lmx::error_none;
  std::string name;
  while (reader.get_attribute_event(nullptr, &error, &name)) {
    expect(!name.empty(), "attributes have names");
    if (error != lmx::error_none) {
      expect(error == lmx::error_attribute_twice, "no other fault comes with an attribute");
      return false;
    }
    std::string value;
    const bool read = calls.byte() % 2 == 0
                          ? reader.get_attribute_value(&value, lmx::whitespace_collapse)
                          : reader.skip_attribute_value();
    if (!read) return false;
  }
  if (error != lmx::error_none) return false;
  if (reader.current_event == lmx::event_end) return true;
  std::string value;
  if (calls.byte() % 4 == 1 && !reader.get_element_value(&value, lmx::whitespace_preserve, true)) {
    return false;
  }
  for (;;) {
    reader.get_element_event(nullptr, &error, &reader.current_name);
    if (error != lmx::error_none) return false;
    if (reader.current_event == lmx::event_end) return true;
    bool no_value = false;
    const std::string simple = reader.current_name;
    switch (calls.byte() % 4) {
      case 1:
        if (!reader.get_simple_type_value(simple, lmx::whitespace_collapse, &value, &error,
                                          &no_value)) {
          return false;
        }
        break;
      case 2:
        if (!reader.get_element_ur_value(simple, &value, &error, &no_value)) return false;
        break;
      default:
        if (!read_element(reader, calls, depth + 1)) return false;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input(data, size);
  const std::size_t chunk = 1 + input.byte() % 64;
  const std::string_view calls = input.text();
  Bytes call_bytes(reinterpret_cast<const std::uint8_t*>(calls.data()), calls.size());
  lmx::c_xml_reader_memory reader(input.rest().data(), input.rest().size(), chunk);
  lmx::elmx_error error = lmx::error_none;
  reader.get_element_event(nullptr, &error, &reader.current_name);
  if (error == lmx::error_none) read_element(reader, call_bytes, 1);
  return 0;
}

#include "companion/xml_walk.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <system_error>

#include "companion/failure.h"
#include "lmx/byte_sources.h"
#include "lmx/value.h"

namespace companion {

namespace {

// The bytes of a file that is read by places.
class SharedSource final : public lmx::ByteSource {
 public:
  explicit SharedSource(const gkf_SharedFile& file) : file_(&file) {}

  std::ptrdiff_t read(std::uint64_t offset, std::span<char> buffer) override {
    gke_Report* report = nullptr;
    const std::int64_t got =
        gkf_SharedRead(file_, buffer.data(), static_cast<std::int64_t>(buffer.size()),
                       static_cast<std::int64_t>(offset), &report);
    gke_DeleteErrorReportEx(&report);
    return static_cast<std::ptrdiff_t>(got);
  }

 private:
  const gkf_SharedFile* file_;
};

std::string shown(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

}  // namespace

XmlWalk::XmlWalk(const gkf_SharedFile& file, std::string path)
    : c_xml_reader(std::make_unique<SharedSource>(file), default_chunk), path_(std::move(path)) {}

void XmlWalk::fail(lmx::elmx_error code, const std::string& name, const std::string& expected) {
  handle_error(code, name, "", 0, expected);
  const lmx::Diagnostic& fault = *diagnostic();
  Failure failure(gkc_BadDescription, path_ + ':' + std::to_string(fault.line) + ':' +
                                          std::to_string(fault.column) + ": " +
                                          (fault.path.empty() ? "/" + name : fault.path) + ": " +
                                          fault.message());
  failure.path = path_;
  failure.element = fault.path;
  failure.text_line = static_cast<std::int64_t>(fault.line);
  throw failure;
}

bool XmlWalk::next_child() {
  lmx::elmx_error error = lmx::error_none;
  get_element_event(nullptr, &error, &current_name);
  if (error != lmx::error_none) fail(error, current_name);
  return current_event != lmx::event_end;
}

void XmlWalk::enter_root(const std::string& name) {
  if (!next_child() || current_name != name) fail(lmx::error_wrong_root, name, '<' + name + '>');
}

bool XmlWalk::take_attributes(Attributes* attributes) {
  lmx::elmx_error error = lmx::error_none;
  while (get_attribute_event(nullptr, &error, &attribute_name)) {
    if (error != lmx::error_none) fail(error, attribute_name);
    if (attributes == nullptr) {
      skip_attribute_value();
      continue;
    }
    std::string value;
    get_attribute_value(&value, lmx::whitespace_collapse);
    attributes->emplace_back(attribute_name, std::move(value));
  }
  return current_event != lmx::event_end;
}

std::string XmlWalk::text(const std::string& name, Attributes* attributes) {
  const lmx::c_xml_reader_local local(this);
  const lmx::c_string_stack_node node(element_name_stack, name);
  value_text.clear();
  if (!take_attributes(attributes)) return {};
  if (!get_element_value(&value_text, lmx::whitespace_collapse, true)) fail(token_error_, name);
  next_child();
  return value_text;
}

double XmlWalk::number(const std::string& name, double lowest, double highest,
                       Attributes* attributes) {
  const auto value = lmx::to_valid_double(text(name, attributes));
  if (value && *value >= lowest && *value <= highest) return *value;
  const lmx::c_string_stack_node node(element_name_stack, name);
  fail(lmx::error_invalid_value, name, "a number from " + shown(lowest) + " to " + shown(highest));
}

void XmlWalk::skip(const std::string& name) {
  const lmx::c_xml_reader_local local(this);
  const lmx::c_string_stack_node node(element_name_stack, name);
  if (!take_attributes(nullptr)) return;
  // A text before a child, or none at all. What else there may be wrong the next step tells.
  do {
    get_element_value(&value_text, lmx::whitespace_preserve, true);
    if (!next_child()) return;
    skip(std::string(current_name));
  } while (true);
}

std::size_t XmlWalk::count_in(const Attributes& attributes, const std::string& name) {
  for (const auto& [attribute, value] : attributes) {
    if (attribute != name) continue;
    std::uint32_t count = 0;
    const char* end = value.data() + value.size();
    const auto [stopped, fault] = std::from_chars(value.data(), end, count);
    if (fault == std::errc() && stopped == end && count > 0) return count;
    attribute_name = name;
    value_text = value;
    fail(lmx::error_invalid_value, name, "a whole number above 0 in the attribute " + name);
  }
  fail(lmx::error_required_attribute_missing, name, name);
}

}  // namespace companion

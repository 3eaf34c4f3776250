#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/shared_file.h"
#include "lmx/reader.h"

namespace companion {

// Goes through an XML file that no schema class describes, in bounded memory. Every fault is a
// Failure that names file, line, column and element.
class XmlWalk : public lmx::c_xml_reader {
 public:
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  // Reads an open file, which must outlive the walk; `path` is its name in messages.
  XmlWalk(const gkf_SharedFile& file, std::string path);

  // Moves to the document's element. Throws Failure where it has another name.
  void enter_root(const std::string& name);

  // With the reader after an element's start tag: hands the name of each child to `on_child`, which
  // takes it whole by one of these operations, up to and including the element's end tag.
  template <class OnChild>
  void children(const std::string& name, OnChild on_child, Attributes* attributes = nullptr);

  // Likewise an element that holds a text alone; blanks are collapsed.
  std::string text(const std::string& name, Attributes* attributes = nullptr);

  // Likewise one that holds a finite number in bounds.
  double number(const std::string& name, double lowest, double highest,
                Attributes* attributes = nullptr);

  // Likewise one of which nothing is wanted, whatever it holds.
  void skip(const std::string& name);

  // A whole number above 0 in an attribute. Throws Failure where it is none or is not there.
  std::size_t count_in(const Attributes& attributes, const std::string& name);

  // Throws Failure for the reader's place.
  [[noreturn]] void fail(lmx::elmx_error code, const std::string& name,
                         const std::string& expected = {});

 private:
  bool take_attributes(Attributes* attributes);  // false: the element is empty and has ended
  bool next_child();                             // false: the element has ended

  std::string path_;
};

template <class OnChild>
void XmlWalk::children(const std::string& name, OnChild on_child, Attributes* attributes) {
  const lmx::c_xml_reader_local local(this);
  const lmx::c_string_stack_node node(element_name_stack, name);
  if (!take_attributes(attributes)) return;
  while (next_child()) on_child(std::string(current_name));
}

// A child that an element has exactly once, with the bounds of its number.
struct NumberField {
  const char* name;
  double lowest;
  double highest;
};

// An element's numbers: each of the fields exactly once, in any order. Every other child goes to
// `on_other`.
template <std::size_t n, class OnOther>
std::array<double, n> numbers_of(XmlWalk& walk, const std::string& element,
                                 const std::array<NumberField, n>& fields, OnOther on_other,
                                 XmlWalk::Attributes* attributes = nullptr) {
  std::array<double, n> numbers{};
  std::bitset<n> seen;
  walk.children(
      element,
      [&](const std::string& child) {
        std::size_t i = 0;
        while (i < n && child != fields[i].name) ++i;
        if (i == n) return on_other(child);
        if (seen[i]) walk.fail(lmx::error_too_many_occurrences, child);
        seen.set(i);
        numbers[i] = walk.number(child, fields[i].lowest, fields[i].highest);
      },
      attributes);
  for (std::size_t i = 0; i < n; ++i) {
    if (!seen[i]) walk.fail(lmx::error_required_element_missing, element, fields[i].name);
  }
  return numbers;
}

}  // namespace companion

#include "binding/fault_collector.h"

#include <string_view>

#include "binding/read_value.h"

namespace binding {

namespace {

using lmx::Diagnostic;

// Whether the reader stands inside the element whose text was refused, so that the rest of it must
// be skipped.
bool is_inside_a_text(const Diagnostic& fault) {
  const bool is_refused =
      fault.code == lmx::error_unreadable_element || fault.code == lmx::error_unknown_attribute;
  return is_refused && (fault.expected == expected_text || fault.expected == expected_markup);
}

// Whether the reader stands at the next element or value after such a fault was let pass.
bool keeps_its_place(const Diagnostic& fault) {
  // The reader's own faults come without a word of what was expected.
  if (fault.expected.empty() || fault.expected == expected_text) return false;
  switch (fault.code) {
    case lmx::error_too_long:
    case lmx::error_required_element_missing:
    case lmx::error_required_attribute_missing:
    case lmx::error_element_empty:
    case lmx::error_invalid_value:
    case lmx::error_above_upper_bound:
    case lmx::error_below_lower_bound:
    case lmx::error_not_in_enumeration:
    case lmx::error_unknown_attribute:
      return true;
    default:
      return false;
  }
}

bool is_at_the_place_of(const Diagnostic& fault, const Diagnostic& earlier) {
  return fault.offset == earlier.offset && fault.path == earlier.path;
}

bool is_missing_element(const Diagnostic& fault) {
  return fault.code == lmx::error_required_element_missing;
}

// A list without entries is told twice, by the entry that is missing and by the list.
bool repeats(const Diagnostic& fault, const Diagnostic& earlier) {
  return is_missing_element(fault) && is_missing_element(earlier) &&
         is_at_the_place_of(fault, earlier) &&
         std::string_view(fault.expected).ends_with(earlier.expected);
}

}  // namespace

void FaultCollector::watch(lmx::c_xml_reader& reader) {
  reader.set_policy([&reader, this](const Diagnostic& fault) { return judge(reader, fault); });
}

bool FaultCollector::can_pass(lmx::c_xml_reader& reader, const Diagnostic& fault) const {
  if (faults_.size() == most_ || (lets_pass_ && !lets_pass_(fault))) return false;
  return is_inside_a_text(fault) ? reader.skip_refused_text() : keeps_its_place(fault);
}

lmx::elmx_error FaultCollector::judge(lmx::c_xml_reader& reader, const Diagnostic& fault) {
  if (!faults_.empty() && repeats(fault, faults_.back())) return {};
  if (can_pass(reader, fault)) {
    faults_.push_back(fault);
    return {};
  }
  saw_all_ = false;
  // An element out of place makes all that should follow it seem missing, and then its parent not
  // ended. The first of these says what stands there and what should.
  if (fault.code == lmx::error_element_not_ended) {
    std::size_t first = faults_.size();
    while (first > 0 && is_at_the_place_of(fault, faults_[first - 1]) &&
           (is_missing_element(faults_[first - 1]) ||
            faults_[first - 1].code == lmx::error_no_choice_present)) {
      --first;
    }
    if (first < faults_.size()) {
      faults_.resize(first + 1);
      return fault.code;
    }
  }
  if (faults_.size() < most_) faults_.push_back(fault);
  return fault.code;
}

}  // namespace binding

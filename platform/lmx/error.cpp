#include "lmx/error.h"

namespace lmx {

const char* meaning(elmx_error error) {
  switch (error) {
    case error_none:
      return "no fault";
    case error_cannot_open:
      return "the file cannot be opened";
    case error_attribute_twice:
      return "an attribute stands twice";
    case error_nothing_chosen:
      return "no member of a choice is chosen";
    case error_element_not_ended:
      return "the element holds more than it may";
    case error_wrong_root:
      return "another root element is expected";
    case error_too_long:
      return "the text is too long";
    case error_required_element_missing:
      return "a required element is missing here";
    case error_required_attribute_missing:
      return "a required attribute is missing";
    case error_too_many_occurrences:
      return "the element stands more often than allowed";
    case error_unreadable_attribute:
      return "the attribute's value cannot be read";
    case error_unreadable_element:
      return "the element's value cannot be read";
    case error_no_choice_present:
      return "none of the elements to choose from is here";
    case error_element_empty:
      return "the element is empty but needs content";
    case error_invalid_value:
      return "the value is not of its type";
    case error_above_upper_bound:
      return "the value is above its upper bound";
    case error_below_lower_bound:
      return "the value is below its lower bound";
    case error_not_in_enumeration:
      return "the value is not one of those allowed";
    case error_unknown_attribute:
      return "the attribute is unknown here";
    case error_nothing_read:
      return "nothing has been read";
    case error_chosen_but_null:
      return "the chosen member of a choice has no object";
    case error_malformed:
      return "the XML is malformed";
    case error_truncated:
      return "the document ends too early";
    case error_doctype:
      return "document type declarations are refused";
    case error_encoding:
      return "the document's encoding is not supported";
    case error_reading:
      return "reading the file failed";
    case error_too_deep:
      return "elements are nested too deeply";
    case error_unexpected_text:
      return "text stands where only elements may";
  }
  return "unknown fault";
}

}  // namespace lmx

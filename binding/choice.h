#pragma once

#include <string>

#include "binding/assertion.h"
#include "binding/engine.h"
#include "binding/storage.h"

// Access to the one member that a choice holds: an object of a class, and, in a document's root, a
// text or a list of texts as well.

namespace binding {

// The held object; the assertion `text` fails when another member is chosen.
template <class T>
const T& chosen_object(const choice& held_choice, int number, const char* text,
                       const char* source_tag) {
  if (held_choice.chosen != number) fail_assertion(text, source_tag);
  return *static_cast<const T*>(held_choice.object);
}

// The held object for writing; when another member is chosen or none, that one is released and a
// new default object becomes the chosen one.
template <class T>
T& choose_object(const class_description& description, choice& held_choice, int number) {
  if (held_choice.chosen != number) {
    release_choice(description, held_choice);
    held_choice = {number, new T};
  }
  return *static_cast<T*>(held_choice.object);
}

// The text or the list of a document's root by the same two rules.
inline const std::string& chosen_text(const choice& held_choice, int number, const char* text,
                                      const char* source_tag) {
  return chosen_object<std::string>(held_choice, number, text, source_tag);
}
inline std::string& choose_text(const class_description& description, choice& held_choice,
                                int number) {
  return choose_object<std::string>(description, held_choice, number);
}
inline const string_list& chosen_list(const choice& held_choice, int number, const char* text,
                                      const char* source_tag) {
  return chosen_object<string_list>(held_choice, number, text, source_tag);
}
inline string_list& choose_list(const class_description& description, choice& held_choice,
                                int number) {
  return choose_object<string_list>(description, held_choice, number);
}

// Chooses the text of that number; false, and nothing changed, for a number outside the set.
inline bool choose_number(const class_description& description, choice& held_choice, int number,
                          value_set set, int value) {
  const enumerated* entry = entry_of(set, value);
  if (entry == nullptr) return false;
  choose_text(description, held_choice, number) = entry->text;
  return true;
}

// The held list; defined only while the member is chosen.
inline string_list& held_list(const choice& held_choice) {
  return *static_cast<string_list*>(held_choice.object);
}

}  // namespace binding

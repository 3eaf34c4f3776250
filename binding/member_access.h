#pragma once

#include <cstddef>

#include "binding/choice.h"
#include "binding/description.h"
#include "binding/storage.h"

// How the engine reaches what an object holds for a member.

namespace binding {

// Whether the member's element may stand more than once. Such a member has no presence flag.
inline bool repeats(const Member& m) {
  return m.form == Form::object_list || m.form == Form::string_list;
}

inline bool& flag_of(void* object, const Member& m) {
  return part_of<bool>(object, m.flag_offset);
}

inline bool flag_of(const void* object, const Member& m) {
  return part_of<bool>(object, m.flag_offset);
}

// How many a repeating member holds.
inline std::size_t count_of(const void* object, const Member& m) {
  return m.form == Form::object_list ? part_of<ObjectEntries>(object, m.offset).pointers.size()
                                     : part_of<StringList>(object, m.offset).size();
}

inline const Choice& choice_of(const ClassDescription& description, const void* object) {
  return part_of<Choice>(object, description.choice_offset);
}

inline Choice& choice_of(const ClassDescription& description, void* object) {
  return part_of<Choice>(object, description.choice_offset);
}

// The member that is chosen, null for none.
inline const Member* chosen_member(const ClassDescription& description, const Choice& choice) {
  const auto number = static_cast<std::size_t>(choice.chosen);
  return number < description.elements.size() ? &description.elements[number] : nullptr;
}

// Calls `visit` with every member that the class holds by itself: all but those of a choice.
template <class Visitor>
void for_each_member(const ClassDescription& description, Visitor visit) {
  for (const Member& m : description.attributes) visit(m);
  if (!has_choice(description)) {
    for (const Member& m : description.elements) visit(m);
  }
  if (description.text != nullptr) visit(*description.text);
}

}  // namespace binding

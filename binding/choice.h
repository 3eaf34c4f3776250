#pragma once

#include <string>

#include "binding/assertion.h"

// What a class holds for a choice: one member of several. It is an object of a class and, in a
// document's root, a text (std::string) or a list of texts (StringList) as well; `T` below is any
// of these.

namespace binding {

// The member that a choice holds: `chosen` is its number in schema order, and `object` points to
// it. The number after the last member's stands for nothing chosen.
struct Choice {
  int chosen;
  void* object = nullptr;
};

// The held object; the assertion `text` fails when another member is chosen.
template <class T>
const T& chosen(const Choice& choice, int number, const char* text, const char* source_tag) {
  if (choice.chosen != number) fail_assertion(text, source_tag);
  return *static_cast<const T*>(choice.object);
}

// The held object for writing. When another member is chosen or none, `release` (the class's own
// release_choice) is called first, and a new default object becomes the chosen one.
template <class T, class Release>
T& choose(Choice& choice, int number, Release release) {
  if (choice.chosen != number) {
    release();
    choice = {number, new T};
  }
  return *static_cast<T*>(choice.object);
}

// The held object, whatever it is: the caller knows that it is a T.
template <class T>
T& held_object(const Choice& choice) {
  return *static_cast<T*>(choice.object);
}

}  // namespace binding

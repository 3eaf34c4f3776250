#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "binding/value_set.h"
#include "lmx/error.h"
#include "lmx/event.h"

namespace lmx {
class c_big_int;
}

// What the engine knows of an annotation class: constant tables, one per class, made from the
// schema tables. Every rule of reading, writing and copying is written once, over these.

namespace binding {

struct ClassDescription;

// How a member stands in the document.
enum class Role : std::uint8_t {
  attribute,
  element,
  text,  // the element's own text, beside its attributes
};

// How a class holds a member; the types are those of binding/storage.h. A choice holds one member
// by a pointer instead: a scalar as std::string, a token list as StringList, an object as itself.
enum class Form : std::uint8_t {
  scalar,       // Held<VALUE>
  token_list,   // TokenList
  string_list,  // StringList
  object,       // Held<CLASS>
  object_list,  // ObjectList<CLASS>
  raw,          // Held<std::string>: the inner markup as it stands
};

// The simple types of the schema, as C++ holds them (binding/value_types.h).
enum class ValueType : std::uint8_t {
  string,
  float64,
  float32,
  int32,
  uint32,
  int64,
  uint64,
  uint8,
  boolean,
  date_time,
};

// Inclusive bounds of an integer, compared on the text, so at any length.
struct IntegerBounds {
  const lmx::c_big_int* lower = nullptr;
  const lmx::c_big_int* upper = nullptr;
};

// The bounds of the schema's integers, built before the first document is read.
extern const lmx::c_big_int minus_one;
extern const lmx::c_big_int zero;
extern const lmx::c_big_int one;
extern const lmx::c_big_int twenty;
extern const lmx::c_big_int int32_lowest;
extern const lmx::c_big_int int32_highest;
extern const lmx::c_big_int uint32_highest;
extern const lmx::c_big_int int64_lowest;
extern const lmx::c_big_int int64_highest;
extern const lmx::c_big_int uint64_highest;

inline constexpr std::uint32_t unbounded = 0xFFFFFFFF;

struct Member {
  const char* name;  // as the document spells it
  Role role;
  Form form;
  ValueType type = ValueType::string;
  int event = 0;                  // number of the name within the version; 0 for an own text
  std::uint32_t offset = 0;       // of what holds it, within the class; unused in a choice
  std::uint32_t flag_offset = 0;  // of its presence flag, within the class; unused without one
  std::uint32_t minimum = 1;      // occurrences
  std::uint32_t maximum = 1;
  std::uint32_t max_length = 0;  // of a string in characters; 0: no limit
  ValueSet values{};             // empty: any text
  IntegerBounds bounds{};        // null pointers: not an integer
  double limit = 0;              // of a floating value's magnitude, inclusive; 0: no limit
  const ClassDescription* nested = nullptr;  // class of an object or of a list's objects
};

// What stands between a class's start tag and its end tag.
enum class Content : std::uint8_t {
  elements,  // its members, in order
  choice,    // one of its members
  text,      // a value of its own
  document,  // one of its members, and the class itself writes no tags: a document's root
};

struct ClassDescription {
  const char* class_name;  // below the namespace, such as "c_dblPolynom::c_dblPolynom_coefficient"
  const char* name;        // the word in reports: the element's name, or a named type's
  const char* source_tag;  // "level1bProduct34", "level1bProduct35" or "level1bProduct40"
  Content content;
  std::span<const Member> attributes{};
  std::span<const Member> elements{};  // of a choice: its members, one of which stands
  const Member* text = nullptr;        // the own text value, or null
  const lmx::s_event_map* attribute_map = nullptr;
  const lmx::s_event_map* element_map = nullptr;  // a row an element, in order, and a closing row
  std::uint32_t choice_offset = 0;                // of the Choice, where there is one
  bool may_be_empty = false;  // an empty element is accepted and its required members go unchecked
  bool is_global = false;     // stands directly in the namespace: writes the namespace attributes
  void* (*create)();          // a new default object
  void (*destroy)(void*);
};

// Whether objects of the class hold a Choice in the place of their elements.
inline bool has_choice(const ClassDescription& description) {
  return description.content == Content::choice || description.content == Content::document;
}

// The tables that all classes of a version share: the reader's and the writer's namespace maps.
// Both are empty, as the schema has no target namespace.
extern const lmx::s_ns_map reader_ns_map[];
extern const lmx::s_ns_map writer_ns_map[];

template <class T>
T& part_of(void* object, std::uint32_t offset) {
  return *reinterpret_cast<T*>(static_cast<std::byte*>(object) + offset);
}

template <class T>
const T& part_of(const void* object, std::uint32_t offset) {
  return *reinterpret_cast<const T*>(static_cast<const std::byte*>(object) + offset);
}

}  // namespace binding

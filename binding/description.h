#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "binding/value_set.h"
#include "lmx/big_int.h"
#include "lmx/reader.h"

// What the engine knows of an annotation class: constant tables, one per class, made from the
// schema tables. Every rule of reading, writing and copying is written once, over these.

namespace binding {

struct class_description;

// How a member stands in the document.
enum class role : std::uint8_t {
  attribute,
  element,
  text,  // the element's own text, beside its attributes
};

// How a class holds a member; the types are those of binding/storage.h.
enum class form : std::uint8_t {
  scalar,       // held<VALUE>
  token_list,   // token_list
  string_list,  // string_list
  object,       // held<CLASS>
  object_list,  // object_list<CLASS>
  raw,          // held<std::string>: the inner markup as it stands
};

// The simple types of the schema, as C++ holds them.
enum class value_type : std::uint8_t {
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
struct integer_bounds {
  const lmx::c_big_int* lower;
  const lmx::c_big_int* upper;
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

struct member {
  const char* name;  // as the document spells it
  binding::role role;
  binding::form form;
  value_type type;
  int event;              // number of the name within the version
  std::uint32_t offset;   // of the holding object within the class; 0 in a choice
  std::uint32_t minimum;  // occurrences
  std::uint32_t maximum;
  std::uint32_t max_length;         // of a string in characters; 0: no limit
  binding::value_set values;        // empty: any text
  integer_bounds bounds;            // null pointers: not an integer
  double limit;                     // of a floating value's magnitude, inclusive; 0: no limit
  const class_description* nested;  // class of an object or of a list's objects, else null
  std::uint32_t flag_offset;        // of a nested object's presence flag within the class
};

// The member that a choice holds: `chosen` is its number in schema order, and `object` points to
// it. Behind the last member's number stands the one for nothing chosen.
struct choice {
  int chosen;
  void* object = nullptr;
};

struct class_description {
  const char* class_name;  // below the namespace, such as "c_dblPolynom::c_dblPolynom_coefficient"
  const char* name;        // the word in reports: the element's name, or a named type's
  const char* source_tag;  // "level1bProduct34", "level1bProduct35" or "level1bProduct40"
  std::span<const member> attributes;
  std::span<const member> elements;  // of a choice: its members, one of which stands
  const member* text;                // the own text value, or null
  const lmx::s_event_map* attribute_map;
  const lmx::s_event_map* element_map;  // one row an element, in order, and the closing row
  std::uint32_t choice_offset;          // of the binding::choice; used where is_choice
  bool is_choice;
  bool may_be_empty;  // an empty element is accepted and its required members go unchecked
  bool is_global;     // stands directly in the namespace: writes the namespace attributes
  void* (*create)();  // a new default object
  void (*destroy)(void*);
};

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

#pragma once

#include <string>

#include "binding/choice.h"
#include "binding/description.h"
#include "lmx/error.h"
#include "lmx/reader.h"
#include "lmx/writer.h"

// The one implementation of every operation that all annotation classes share. `object` is always
// an object of the described class. Errors are lmx::elmx_error, 0 for success; allocation failures
// pass through as exceptions.

namespace binding {

// --- Life (lifecycle.cpp) -----------------------------------------------------------------------

// Sets all presence flags to false. No default value is applied.
void init(const ClassDescription& description, void* object);

// Deletes what lists and a choice point to. Flags and nested objects held by value stay.
void release(const ClassDescription& description, void* object);

// Deletes the chosen object of a class with a choice, and leaves nothing chosen.
void release_choice(const ClassDescription& description, Choice& choice);

// Deep copy into a freshly initialised object, as the members' own operations would make it:
// required values are set and so marked present whether or not the source had them; enumerated
// texts pass through their numbers, so that a text outside its set is left out; optional members
// are copied where the source has them.
void copy(const ClassDescription& description, void* target, const void* source);

// Exchanges every member and flag in declaration order.
void swap(const ClassDescription& description, void* a, void* b);

// True when all required members are present and every list is within its bounds; of a choice:
// when a member is chosen. Nested objects are not looked into.
bool is_occurs_ok(const ClassDescription& description, const void* object);

// A new default object of what a choice holds for the member, and its end.
void* create_chosen(const Member& m);
void destroy_chosen(const Member& m, void* object);

// --- Reading (read.cpp, read_content.cpp) -------------------------------------------------------

// Reads an element in whose start tag the reader stands, up to and including its end tag. Members
// are expected strictly in schema order. The first fault ends the read with its code; what was read
// so far stays in the object. Nothing is cleared first: scalars are overwritten, lists appended to.
lmx::elmx_error read_element(const ClassDescription& description, void* object,
                             lmx::c_xml_reader& reader, const std::string& element_name);

// One attribute, just reported by the reader. False when it is not one of the class's, or on a
// fault, which is then in `*error`.
bool read_attribute(const ClassDescription& description, void* object, lmx::c_xml_reader& reader,
                    const std::string& element_name, lmx::elmx_error* error);

// Reports a required attribute that was not read.
lmx::elmx_error check_attributes(const ClassDescription& description, const void* object,
                                 lmx::c_xml_reader& reader);

// The children of a class with element content, or the chosen one of a choice or a document;
// `name` is the current element's name throughout. An object that a choice held before is
// overwritten and lost, as the family is told to do: an object is read once, or reset first.
lmx::elmx_error read_content(const ClassDescription& description, void* object,
                             lmx::c_xml_reader& reader, std::string& name);

// The text of a class with an own text value.
lmx::elmx_error read_text(const ClassDescription& description, void* object,
                          lmx::c_xml_reader& reader, const std::string& name, bool has_content);

// --- Writing (write.cpp) ------------------------------------------------------------------------

// Writes the element; of a document its chosen member alone, whatever the name. A violated
// occurrence is a fatal assertion; values are not checked. find_unwritable (writable.h) tells
// beforehand.
lmx::elmx_error write_element(const ClassDescription& description, const void* object,
                              lmx::c_xml_writer& writer, const char* element_name);
void write_attributes(const ClassDescription& description, const void* object,
                      lmx::c_xml_writer& writer);
lmx::elmx_error write_content(const ClassDescription& description, const void* object,
                              lmx::c_xml_writer& writer);

// --- Objects without their type -----------------------------------------------------------------

template <class T>
void* create() {
  return new T;
}

template <class T>
void destroy(void* object) {
  delete static_cast<T*>(object);
}

// Owner of an object of a described class, until it is released to its place.
class OwnedObject {
 public:
  explicit OwnedObject(const ClassDescription& description)
      : description_(description), object_(description.create()) {}
  OwnedObject(const OwnedObject&) = delete;
  OwnedObject& operator=(const OwnedObject&) = delete;
  ~OwnedObject() {
    if (object_ != nullptr) description_.destroy(object_);
  }
  void* get() const { return object_; }
  void release() { object_ = nullptr; }

 private:
  const ClassDescription& description_;
  void* object_;
};

}  // namespace binding

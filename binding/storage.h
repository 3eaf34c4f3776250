#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "binding/assertion.h"
#include "binding/value_set.h"
#include "lmx/error.h"

// What an annotation class holds for each form of member. The class's accessors are one-line calls
// into these types; the engine reaches the same objects through the class's description.

namespace binding {

// A single value or a nested object, followed by whether it was read or set. Kept on purpose: the
// flag does not guard the value, which reads as its default if never set, if unset as before.
template <class T>
struct Held {
  T value{};
  bool is_set = false;

  template <class U>
  lmx::elmx_error set(U&& new_value) {
    value = std::forward<U>(new_value);
    is_set = true;
    return lmx::elmx_error{};
  }

  // Asking for a writable nested object marks it present.
  T& touch() {
    is_set = true;
    return value;
  }
};

// An enumerated text set by its number; false, and nothing changed, for a number outside the set.
inline bool set_number(Held<std::string>& member, ValueSet set, int number) {
  const Enumerated* entry = entry_of(set, number);
  return entry != nullptr && member.set(std::string(entry->text)) == 0;
}

// Owned strings of a repeating string element. There is no maximum.
class StringList {
 public:
  std::size_t size() const { return entries_.size(); }

  // Element `index`; past the end the assertion `text` fails.
  const std::string& get(std::size_t index, const char* text, const char* source_tag) const {
    check(index, text, source_tag);
    return *entries_[index];
  }

  // Past the end the operation appends.
  lmx::elmx_error set(std::size_t index, const std::string& text) {
    if (index >= size()) return append(text);
    *entries_[index] = text;
    return lmx::elmx_error{};
  }

  lmx::elmx_error append(const std::string& text) {
    entries_.push_back(std::make_unique<std::string>(text));
    return lmx::elmx_error{};
  }

  // Inserts before `index`; past the end it appends.
  lmx::elmx_error insert(std::size_t index, const std::string& text) {
    if (index >= size()) return append(text);
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index),
                    std::make_unique<std::string>(text));
    return lmx::elmx_error{};
  }

  void remove(std::size_t index, const char* text, const char* source_tag) {
    check(index, text, source_tag);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
  }

  void clear() { entries_.clear(); }

  // A new empty string at the end, for a reader to fill.
  std::string& add() { return *entries_.emplace_back(std::make_unique<std::string>()); }

  const std::string& operator[](std::size_t index) const { return *entries_[index]; }

  // The same by the texts' numbers in a value set.
  int number(std::size_t index, ValueSet set, const char* text, const char* source_tag) const {
    return number_of(set, get(index, text, source_tag));
  }
  bool set_number(std::size_t index, ValueSet set, int number) {
    const Enumerated* entry = entry_of(set, number);
    return entry != nullptr && this->set(index, std::string(entry->text)) == 0;
  }
  bool append_number(ValueSet set, int number) {
    const Enumerated* entry = entry_of(set, number);
    return entry != nullptr && append(std::string(entry->text)) == 0;
  }
  bool insert_number(std::size_t index, ValueSet set, int number) {
    const Enumerated* entry = entry_of(set, number);
    return entry != nullptr && insert(index, std::string(entry->text)) == 0;
  }

 private:
  void check(std::size_t index, const char* text, const char* source_tag) const {
    if (index >= size()) fail_assertion(text, source_tag);
  }

  std::vector<std::unique_ptr<std::string>> entries_;
};

// A whitespace-separated list value: its tokens, and whether the list was read or set. Clearing the
// list leaves the flag as it is.
class TokenList {
 public:
  StringList entries;
  bool is_set = false;

  lmx::elmx_error set(std::size_t index, const std::string& text) {
    return flagged(entries.set(index, text));
  }
  lmx::elmx_error append(const std::string& text) { return flagged(entries.append(text)); }
  lmx::elmx_error insert(std::size_t index, const std::string& text) {
    return flagged(entries.insert(index, text));
  }
  bool set_number(std::size_t index, ValueSet set, int number) {
    return flagged(entries.set_number(index, set, number));
  }
  bool append_number(ValueSet set, int number) {
    return flagged(entries.append_number(set, number));
  }
  bool insert_number(std::size_t index, ValueSet set, int number) {
    return flagged(entries.insert_number(index, set, number));
  }

 private:
  lmx::elmx_error flagged(lmx::elmx_error result) {
    is_set = true;
    return result;
  }
  bool flagged(bool done) {
    is_set = is_set || done;
    return done;
  }
};

// The pointers of an ObjectList without their type: what the engine works on.
struct ObjectEntries {
  std::vector<void*> pointers;
};

// Owned objects of a repeating element. `maximum` 0 stands for no maximum. They are held by
// pointer, so a growing list moves pointers only.
template <class T, std::size_t maximum = 0>
class ObjectList : public ObjectEntries {
 public:
  ObjectList() = default;
  ObjectList(const ObjectList&) = delete;
  ObjectList& operator=(const ObjectList&) = delete;
  ~ObjectList() { clear(); }

  std::size_t size() const { return pointers.size(); }

  const T& get(std::size_t index, const char* text, const char* source_tag) const {
    check(index, text, source_tag);
    return at(index);
  }

  // Appends default objects until `index` exists. With a maximum, an index at or past it is a fatal
  // assertion.
  T& grow(std::size_t index, const char* source_tag) {
    if constexpr (maximum != 0) {
      if (index >= maximum) fail_assertion("a_index < " + std::to_string(maximum), source_tag);
    }
    while (index >= size()) add();
    return at(index);
  }

  T& back(const char* text, const char* source_tag) {
    if (pointers.empty()) fail_assertion(text, source_tag);
    return at(size() - 1);
  }

  lmx::elmx_error append() {
    if (full()) return lmx::elmx_error{lmx::error_too_many_occurrences};
    add();
    return lmx::elmx_error{};
  }

  lmx::elmx_error insert(std::size_t index) {
    if (index >= size()) return append();
    if (full()) return lmx::elmx_error{lmx::error_too_many_occurrences};
    auto object = std::make_unique<T>();
    pointers.insert(pointers.begin() + static_cast<std::ptrdiff_t>(index), object.get());
    static_cast<void>(object.release());
    return lmx::elmx_error{};
  }

  void remove(std::size_t index, const char* text, const char* source_tag) {
    check(index, text, source_tag);
    const std::unique_ptr<T> object(&at(index));
    pointers.erase(pointers.begin() + static_cast<std::ptrdiff_t>(index));
  }

  void clear() {
    while (!pointers.empty()) {
      const std::unique_ptr<T> object(&at(size() - 1));
      pointers.pop_back();
    }
  }

 private:
  bool full() const { return maximum != 0 && size() >= maximum; }
  T& at(std::size_t index) const { return *static_cast<T*>(pointers[index]); }
  void add() {
    auto object = std::make_unique<T>();
    pointers.push_back(object.get());
    static_cast<void>(object.release());
  }
  void check(std::size_t index, const char* text, const char* source_tag) const {
    if (index >= size()) fail_assertion(text, source_tag);
  }
};

}  // namespace binding

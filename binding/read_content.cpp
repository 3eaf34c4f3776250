#include <algorithm>

#include "binding/engine.h"
#include "binding/member_access.h"
#include "binding/read_value.h"

// The walk over a class's children.

namespace binding {

namespace {

using lmx::c_xml_reader;
using lmx::elmx_error;

// What the steps of the walk share. Each gives the code that ends the read, 0 to go on.
struct Walk {
  const ClassDescription& description;
  void* object;
  c_xml_reader& reader;
  std::string& name;

  void* held(const Member& m) const { return &part_of<std::byte>(object, m.offset); }

  // Reports a fault, and gives what the reader's policy makes of it.
  elmx_error fault(elmx_error code, const std::string& reported, std::string expected,
                   const Member& m) const {
    return reader.handle_error(code, reported, description.source_tag, m.event,
                               std::move(expected));
  }

  bool stands_on(const Member& m) const { return reader.current_event == m.event; }

  // The next element, classified by the map from this member's entry onward: an earlier name is
  // unknown from here on, so order is strict.
  elmx_error fetch_from(const Member& m) const {
    elmx_error error{};
    const auto index = &m - description.elements.data();
    reader.get_element_event(description.element_map + index, &error, &name);
    return error == 0 ? error : fault(error, name, {}, m);
  }

  ValueSite site(const Member& m) const { return {reader, name, description.source_tag, m}; }
};

std::string in_brackets(const char* name) {
  return std::string("<") + name + ">";
}

// --- One child -----------------------------------------------------------------------------------

struct Fetched {
  bool has_value;    // in reader.value_text
  elmx_error error;  // without a value: what ends the read, 0 where a policy lets it go on
};

// The text of a simple-typed child. Unreadable lists and list entries are told with a code of their
// own, others with the reader's.
Fetched fetch_value(const Walk& w, const Member& m) {
  elmx_error error{};
  bool no_value = false;
  if (w.reader.get_simple_type_value(w.name, whitespace_of(m), &w.reader.value_text, &error,
                                     &no_value)) {
    return {true, {}};
  }
  if (m.form != Form::scalar) error = elmx_error{lmx::error_unreadable_element};
  return {false, w.fault(error, w.name, expected_text, m)};
}

elmx_error read_simple(const Walk& w, const Member& m) {
  const Fetched fetched = fetch_value(w, m);
  if (fetched.has_value) return store_value(w.site(m), w.held(m));
  // A list that could not be read, but was let pass, is one without tokens.
  if (fetched.error == 0 && m.form == Form::token_list) flag_of(w.object, m) = true;
  return fetched.error;
}

// The inner markup as it stands. The member counts as present only when there was any.
elmx_error read_raw(const Walk& w, const Member& m) {
  elmx_error error{};
  bool no_value = false;
  if (!w.reader.get_element_ur_value(w.name, &w.reader.value_text, &error, &no_value)) {
    return w.fault(error, w.name, expected_markup, m);
  }
  auto& markup = part_of<Held<std::string>>(w.object, m.offset);
  markup.value = w.reader.value_text;
  markup.is_set = markup.is_set || !no_value;
  return {};
}

// A nested element's own fault was reported where it arose and passes up unchanged.
elmx_error read_object(const Walk& w, const Member& m) {
  const elmx_error error = read_element(*m.nested, w.held(m), w.reader, w.name);
  if (error == 0) flag_of(w.object, m) = true;
  return error;
}

elmx_error read_list_object(const Walk& w, const Member& m) {
  auto& pointers = part_of<ObjectEntries>(w.object, m.offset).pointers;
  OwnedObject appended(*m.nested);
  pointers.push_back(appended.get());
  appended.release();
  return read_element(*m.nested, pointers.back(), w.reader, w.name);
}

elmx_error read_value_of(const Walk& w, const Member& m) {
  switch (m.form) {
    case Form::scalar:
    case Form::token_list:
    case Form::string_list:
      return read_simple(w, m);
    case Form::object:
      return read_object(w, m);
    case Form::object_list:
      return read_list_object(w, m);
    case Form::raw:
      return read_raw(w, m);
  }
  return {};
}

// The element of a member on which the reader stands, and the step to the next one.
elmx_error read_child(const Walk& w, const Member& m) {
  const elmx_error error = read_value_of(w, m);
  return error != 0 ? error : w.fetch_from(m);
}

// --- Members in order ----------------------------------------------------------------------------

elmx_error read_member(const Walk& w, const Member& m) {
  if (!w.stands_on(m)) {
    return m.minimum == 0 ? elmx_error{}
                          : w.fault(elmx_error{lmx::error_required_element_missing}, m.name,
                                    in_brackets(m.name), m);
  }
  if (!repeats(m)) return read_child(w, m);
  // A bounded repeat stops at its upper bound without a fault: one more is then out of place.
  while (w.stands_on(m) && count_of(w.object, m) < m.maximum) {
    if (const elmx_error error = read_child(w, m); error != 0) return error;
  }
  return {};
}

// One report for all lists of the class that came short, with the class's own name.
elmx_error check_minimums(const Walk& w) {
  for (const Member& m : w.description.elements) {
    if (!repeats(m) || count_of(w.object, m) >= m.minimum) continue;
    return w.fault(elmx_error{lmx::error_required_element_missing}, w.description.name,
                   std::to_string(m.minimum) + " or more of " + in_brackets(m.name), m);
  }
  return {};
}

// --- One member of several -----------------------------------------------------------------------

std::string expected_choice(const ClassDescription& description) {
  if (description.content == Content::document) return "<level1Product>";
  std::string text = "one of";
  for (const Member& m : description.elements) text += ' ' + in_brackets(m.name);
  return text;
}

elmx_error read_chosen(const Walk& w, const Member& m, void* chosen) {
  if (m.form == Form::object) return read_element(*m.nested, chosen, w.reader, w.name);
  const Fetched fetched = fetch_value(w, m);
  if (!fetched.has_value) return fetched.error;
  return m.form == Form::token_list ? store_tokens(w.site(m), *static_cast<StringList*>(chosen))
                                    : store_text(w.site(m), *static_cast<std::string*>(chosen));
}

elmx_error read_choice(const Walk& w) {
  const auto members = w.description.elements;
  const auto found =
      std::find_if(members.begin(), members.end(), [&](const Member& m) { return w.stands_on(m); });
  if (found == members.end()) {
    return w.fault(elmx_error{lmx::error_no_choice_present}, w.name, expected_choice(w.description),
                   members.front());
  }
  // Kept on purpose: what an earlier read on the same object chose is not released.
  Choice& choice = choice_of(w.description, w.object);
  choice = {static_cast<int>(found - members.begin()), create_chosen(*found)};
  const elmx_error error = read_chosen(w, *found, choice.object);
  // Nothing is read after a document's root element.
  if (error != 0 || w.description.content == Content::document) return error;
  return w.fetch_from(*found);
}

}  // namespace

elmx_error read_content(const ClassDescription& description, void* object, c_xml_reader& reader,
                        std::string& name) {
  const Walk w{description, object, reader, name};
  reader.tokenise(description.element_map, lmx::current_element);
  if (has_choice(description)) return read_choice(w);
  for (const Member& m : description.elements) {
    if (const elmx_error error = read_member(w, m); error != 0) return error;
  }
  return check_minimums(w);
}

}  // namespace binding

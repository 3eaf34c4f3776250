#include "binding/writable.h"

#include "binding/member_access.h"

namespace binding {

namespace {

using Found = std::optional<Unwritable>;

std::string word_of(const Member& m) {
  return m.role == Role::attribute ? std::string("attribute ") + m.name
                                   : std::string("<") + m.name + ">";
}

bool is_empty_list(const void* object, const Member& m) {
  return m.form == Form::token_list && part_of<TokenList>(object, m.offset).entries.size() == 0;
}

// An own text is always written, with a list's entries or without any.
Found find_in_own_text(const Member& m, const void* object, const std::string& path) {
  if (m.type != ValueType::string || flag_of(object, m)) return {};
  return Unwritable{path, "has no text"};
}

Found find_in_objects(const Member& m, const void* object, const std::string& path) {
  for (const void* entry : part_of<ObjectEntries>(object, m.offset).pointers) {
    if (Found found = find_unwritable(*m.nested, entry, path + '/' + m.name)) return found;
  }
  return {};
}

Found find_in_member(const Member& m, const void* object, const std::string& path) {
  if (repeats(m)) {
    const std::size_t count = count_of(object, m);
    if (count < m.minimum) return Unwritable{path, "has no " + word_of(m)};
    if (count > m.maximum) {
      return Unwritable{path, "has more than " + std::to_string(m.maximum) + " of " + word_of(m)};
    }
    return m.form == Form::object_list ? find_in_objects(m, object, path) : Found{};
  }
  if (!flag_of(object, m)) {
    return m.minimum == 0 ? Found{} : Unwritable{path, "has no " + word_of(m)};
  }
  if (m.form == Form::object) {
    return find_unwritable(*m.nested, &part_of<std::byte>(object, m.offset), path + '/' + m.name);
  }
  if (m.minimum > 0 && is_empty_list(object, m)) {
    return Unwritable{path, "has nothing in the list of " + word_of(m)};
  }
  return {};
}

Found find_in_choice(const ClassDescription& description, const Choice& choice,
                     const std::string& path) {
  const Member* m = chosen_member(description, choice);
  if (m == nullptr || choice.object == nullptr) {
    return Unwritable{path, "holds none of its elements"};
  }
  const std::string member_path = path + '/' + m->name;
  if (m->form == Form::object) return find_unwritable(*m->nested, choice.object, member_path);
  if (m->form == Form::token_list && held_object<StringList>(choice).size() == 0) {
    return Unwritable{member_path, "has nothing in its list"};
  }
  return {};
}

}  // namespace

Found find_unwritable(const ClassDescription& description, const void* object,
                      const std::string& path) {
  for (const Member& m : description.attributes) {
    if (Found found = find_in_member(m, object, path)) return found;
  }
  if (description.text != nullptr) return find_in_own_text(*description.text, object, path);
  if (has_choice(description)) {
    return find_in_choice(description, choice_of(description, object), path);
  }
  for (const Member& m : description.elements) {
    if (Found found = find_in_member(m, object, path)) return found;
  }
  return {};
}

}  // namespace binding

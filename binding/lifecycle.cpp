#include <memory>
#include <utility>

#include "binding/engine.h"
#include "binding/storage.h"
#include "lmx/datetime.h"

namespace binding {

namespace {

bool& flag_of(void* object, const member& m) {
  return part_of<bool>(object, m.flag_offset);
}

bool flag_of(const void* object, const member& m) {
  return part_of<bool>(object, m.flag_offset);
}

bool has_flag(const member& m) {
  return m.form != form::object_list && m.form != form::string_list;
}

// Calls `visit(T{})` with the C++ type of a scalar member's value.
template <class Visitor>
void with_value_type(value_type type, Visitor visit) {
  switch (type) {
    case value_type::string:
      return visit(std::string());
    case value_type::float64:
      return visit(double());
    case value_type::float32:
      return visit(float());
    case value_type::int32:
      return visit(std::int32_t());
    case value_type::uint32:
      return visit(std::uint32_t());
    case value_type::int64:
      return visit(std::int64_t());
    case value_type::uint64:
      return visit(std::uint64_t());
    case value_type::uint8:
      return visit(std::uint8_t());
    case value_type::boolean:
      return visit(bool());
    case value_type::date_time:
      return visit(lmx::c_datetime());
  }
}

template <class Visitor>
void for_each_member(const class_description& description, Visitor visit) {
  for (const member& m : description.attributes) visit(m);
  if (!description.is_choice) {
    for (const member& m : description.elements) visit(m);
  }
  if (description.text != nullptr) visit(*description.text);
}

// A numeric text value of a class is never missed: an empty element has failed its check already.
bool is_required(const class_description& description, const member& m) {
  return m.minimum > 0 && (&m != description.text || m.type == value_type::string);
}

std::size_t size_of(const void* object, const member& m) {
  return m.form == form::object_list ? part_of<object_entries>(object, m.offset).pointers.size()
                                     : part_of<string_list>(object, m.offset).size();
}

void copy_object(const class_description& description, void* target, const void* source) {
  const owned_object copied(description);
  copy(description, copied.get(), source);
  swap(description, target, copied.get());
}

// Enumerated texts travel by their numbers, so a text outside its set does not survive the copy.
void copy_text(const member& m, held<std::string>& target, const held<std::string>& source) {
  if (m.values.empty()) {
    target.set(source.value);
  } else {
    set_number(target, m.values, number_of(m.values, source.value));
  }
}

template <class List>
void copy_texts(const member& m, List& target, const string_list& source) {
  for (std::size_t i = 0; i < source.size(); ++i) {
    if (m.values.empty()) {
      target.append(source[i]);
    } else {
      target.append_number(m.values, number_of(m.values, source[i]));
    }
  }
}

void copy_scalar(const member& m, void* target, const void* source) {
  if (m.type == value_type::string) {
    copy_text(m, part_of<held<std::string>>(target, m.offset),
              part_of<held<std::string>>(source, m.offset));
    return;
  }
  with_value_type(m.type, [&](auto value) {
    using T = decltype(value);
    part_of<held<T>>(target, m.offset).set(part_of<held<T>>(source, m.offset).value);
  });
}

void copy_objects(const member& m, void* target, const void* source) {
  auto& copies = part_of<object_entries>(target, m.offset).pointers;
  for (const void* object : part_of<object_entries>(source, m.offset).pointers) {
    owned_object copied(*m.nested);
    copy(*m.nested, copied.get(), object);
    copies.push_back(copied.get());
    copied.release();
  }
}

void copy_member(const member& m, void* target, const void* source) {
  switch (m.form) {
    case form::string_list:
      copy_texts(m, part_of<string_list>(target, m.offset), part_of<string_list>(source, m.offset));
      return;
    case form::object_list:
      copy_objects(m, target, source);
      return;
    case form::token_list:
      copy_texts(m, part_of<token_list>(target, m.offset),
                 part_of<token_list>(source, m.offset).entries);
      if (m.minimum == 0) flag_of(target, m) = flag_of(source, m);
      return;
    case form::object:
      if (m.minimum == 0 && !flag_of(source, m)) return;
      copy_object(*m.nested, &part_of<std::byte>(target, m.offset),
                  &part_of<std::byte>(source, m.offset));
      flag_of(target, m) = true;
      return;
    case form::scalar:
    case form::raw:
      if (m.minimum > 0 || flag_of(source, m)) copy_scalar(m, target, source);
      return;
  }
}

void destroy_chosen(const member& m, void* object) {
  switch (m.form) {
    case form::object:
      m.nested->destroy(object);
      return;
    case form::token_list:
      delete static_cast<string_list*>(object);
      return;
    default:
      delete static_cast<std::string*>(object);
  }
}

const member* chosen_member(const class_description& description, const choice& held_choice) {
  const auto number = static_cast<std::size_t>(held_choice.chosen);
  if (held_choice.object == nullptr || number >= description.elements.size()) return nullptr;
  return &description.elements[number];
}

// Texts and lists travel by number here too: nothing known in the source leaves nothing chosen.
void copy_choice(const class_description& description, choice& target, const choice& source) {
  const member* m = chosen_member(description, source);
  if (m == nullptr) return;
  if (m->form == form::object) {
    owned_object copied(*m->nested);
    copy(*m->nested, copied.get(), source.object);
    target = {source.chosen, copied.get()};
    copied.release();
  } else if (m->form == form::token_list) {
    auto copied = std::make_unique<string_list>();
    copy_texts(*m, *copied, *static_cast<const string_list*>(source.object));
    if (copied->size() > 0) target = {source.chosen, copied.release()};
  } else {
    held<std::string> copied;
    copy_text(*m, copied, {*static_cast<const std::string*>(source.object), true});
    if (copied.is_set) target = {source.chosen, new std::string(std::move(copied.value))};
  }
}

void swap_member(const member& m, void* a, void* b) {
  switch (m.form) {
    case form::string_list:
      std::swap(part_of<string_list>(a, m.offset), part_of<string_list>(b, m.offset));
      return;
    case form::object_list:
      part_of<object_entries>(a, m.offset)
          .pointers.swap(part_of<object_entries>(b, m.offset).pointers);
      return;
    case form::token_list:
      std::swap(part_of<token_list>(a, m.offset), part_of<token_list>(b, m.offset));
      return;
    case form::object:
      swap(*m.nested, &part_of<std::byte>(a, m.offset), &part_of<std::byte>(b, m.offset));
      std::swap(flag_of(a, m), flag_of(b, m));
      return;
    case form::scalar:
    case form::raw:
      with_value_type(m.type, [&](auto value) {
        using T = held<decltype(value)>;
        std::swap(part_of<T>(a, m.offset), part_of<T>(b, m.offset));
      });
      return;
  }
}

}  // namespace

void init(const class_description& description, void* object) {
  for_each_member(description, [&](const member& m) {
    if (has_flag(m)) flag_of(object, m) = false;
  });
}

void release(const class_description& description, void* object) {
  for_each_member(description, [&](const member& m) {
    if (m.form == form::object_list) {
      auto& pointers = part_of<object_entries>(object, m.offset).pointers;
      for (void* entry : pointers) m.nested->destroy(entry);
      pointers.clear();
    } else if (m.form == form::string_list) {
      part_of<string_list>(object, m.offset).clear();
    } else if (m.form == form::token_list) {
      part_of<token_list>(object, m.offset).entries.clear();
    }
  });
  if (description.is_choice) {
    release_choice(description, part_of<choice>(object, description.choice_offset));
  }
}

void release_choice(const class_description& description, choice& held_choice) {
  const member* m = chosen_member(description, held_choice);
  if (m != nullptr) destroy_chosen(*m, held_choice.object);
  held_choice = {static_cast<int>(description.elements.size()), nullptr};
}

void copy(const class_description& description, void* target, const void* source) {
  for_each_member(description, [&](const member& m) { copy_member(m, target, source); });
  if (description.is_choice) {
    copy_choice(description, part_of<choice>(target, description.choice_offset),
                part_of<choice>(source, description.choice_offset));
  }
}

void swap(const class_description& description, void* a, void* b) {
  for_each_member(description, [&](const member& m) { swap_member(m, a, b); });
  if (description.is_choice) {
    std::swap(part_of<choice>(a, description.choice_offset),
              part_of<choice>(b, description.choice_offset));
  }
}

bool is_occurs_ok(const class_description& description, const void* object) {
  if (description.is_choice) {
    return part_of<choice>(object, description.choice_offset).chosen !=
           static_cast<int>(description.elements.size());
  }
  bool ok = true;
  for_each_member(description, [&](const member& m) {
    if (has_flag(m)) {
      ok = ok && (!is_required(description, m) || flag_of(object, m));
    } else {
      const std::size_t size = size_of(object, m);
      ok = ok && size >= m.minimum && size <= m.maximum;
    }
  });
  return ok;
}

}  // namespace binding

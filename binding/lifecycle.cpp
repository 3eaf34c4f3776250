#include <memory>
#include <utility>

#include "binding/engine.h"
#include "binding/member_access.h"
#include "binding/storage.h"
#include "binding/value_types.h"

namespace binding {

namespace {

// A numeric text value of a class is never missed: an empty element has failed its check already.
bool is_required(const ClassDescription& description, const Member& m) {
  return m.minimum > 0 && (&m != description.text || m.type == ValueType::string);
}

void copy_object(const ClassDescription& description, void* target, const void* source) {
  const OwnedObject copied(description);
  copy(description, copied.get(), source);
  swap(description, target, copied.get());
}

// Kept on purpose: enumerated texts travel by their numbers, so a text outside its set does not
// survive the copy.
void copy_text(const Member& m, Held<std::string>& target, const std::string& source) {
  if (m.values.empty()) {
    target.set(source);
  } else {
    set_number(target, m.values, number_of(m.values, source));
  }
}

template <class List>
void copy_texts(const Member& m, List& target, const StringList& source) {
  for (std::size_t i = 0; i < source.size(); ++i) {
    if (m.values.empty()) {
      target.append(source[i]);
    } else {
      target.append_number(m.values, number_of(m.values, source[i]));
    }
  }
}

void copy_scalar(const Member& m, void* target, const void* source) {
  with_value_type(m.type, [&]<class T>(std::type_identity<T>) {
    auto& copied = part_of<Held<T>>(target, m.offset);
    const T& value = part_of<Held<T>>(source, m.offset).value;
    if constexpr (std::is_same_v<T, std::string>) {
      copy_text(m, copied, value);
    } else {
      copied.set(value);
    }
  });
}

void copy_objects(const Member& m, void* target, const void* source) {
  auto& copies = part_of<ObjectEntries>(target, m.offset).pointers;
  for (const void* object : part_of<ObjectEntries>(source, m.offset).pointers) {
    OwnedObject copied(*m.nested);
    copy(*m.nested, copied.get(), object);
    copies.push_back(copied.get());
    copied.release();
  }
}

void copy_member(const Member& m, void* target, const void* source) {
  switch (m.form) {
    case Form::string_list:
      copy_texts(m, part_of<StringList>(target, m.offset), part_of<StringList>(source, m.offset));
      return;
    case Form::object_list:
      copy_objects(m, target, source);
      return;
    case Form::token_list:
      copy_texts(m, part_of<TokenList>(target, m.offset),
                 part_of<TokenList>(source, m.offset).entries);
      if (m.minimum == 0) flag_of(target, m) = flag_of(source, m);
      return;
    case Form::object:
      if (m.minimum == 0 && !flag_of(source, m)) return;
      copy_object(*m.nested, &part_of<std::byte>(target, m.offset),
                  &part_of<std::byte>(source, m.offset));
      flag_of(target, m) = true;
      return;
    case Form::scalar:
    case Form::raw:
      if (m.minimum > 0 || flag_of(source, m)) copy_scalar(m, target, source);
      return;
  }
}

// Texts and lists travel by number here too: nothing known in the source leaves nothing chosen.
void copy_choice(const ClassDescription& description, Choice& target, const Choice& source) {
  const Member* m = chosen_member(description, source);
  if (m == nullptr || source.object == nullptr) return;
  if (m->form == Form::object) {
    OwnedObject copied(*m->nested);
    copy(*m->nested, copied.get(), source.object);
    target = {source.chosen, copied.get()};
    copied.release();
  } else if (m->form == Form::token_list) {
    auto copied = std::make_unique<StringList>();
    copy_texts(*m, *copied, *static_cast<const StringList*>(source.object));
    if (copied->size() > 0) target = {source.chosen, copied.release()};
  } else {
    Held<std::string> copied;
    copy_text(*m, copied, *static_cast<const std::string*>(source.object));
    if (copied.is_set) target = {source.chosen, new std::string(std::move(copied.value))};
  }
}

void swap_member(const Member& m, void* a, void* b) {
  switch (m.form) {
    case Form::string_list:
      std::swap(part_of<StringList>(a, m.offset), part_of<StringList>(b, m.offset));
      return;
    case Form::object_list:
      part_of<ObjectEntries>(a, m.offset)
          .pointers.swap(part_of<ObjectEntries>(b, m.offset).pointers);
      return;
    case Form::token_list:
      std::swap(part_of<TokenList>(a, m.offset), part_of<TokenList>(b, m.offset));
      return;
    case Form::object:
      swap(*m.nested, &part_of<std::byte>(a, m.offset), &part_of<std::byte>(b, m.offset));
      std::swap(flag_of(a, m), flag_of(b, m));
      return;
    case Form::scalar:
    case Form::raw:
      with_value_type(m.type, [&]<class T>(std::type_identity<T>) {
        std::swap(part_of<Held<T>>(a, m.offset), part_of<Held<T>>(b, m.offset));
      });
      return;
  }
}

}  // namespace

void init(const ClassDescription& description, void* object) {
  for_each_member(description, [&](const Member& m) {
    if (!repeats(m)) flag_of(object, m) = false;
  });
  if (has_choice(description)) {
    choice_of(description, object) = {static_cast<int>(description.elements.size()), nullptr};
  }
}

void release(const ClassDescription& description, void* object) {
  for_each_member(description, [&](const Member& m) {
    if (m.form == Form::object_list) {
      auto& pointers = part_of<ObjectEntries>(object, m.offset).pointers;
      for (void* entry : pointers) m.nested->destroy(entry);
      pointers.clear();
    } else if (m.form == Form::string_list) {
      part_of<StringList>(object, m.offset).clear();
    } else if (m.form == Form::token_list) {
      part_of<TokenList>(object, m.offset).entries.clear();
    }
  });
  if (has_choice(description)) release_choice(description, choice_of(description, object));
}

void release_choice(const ClassDescription& description, Choice& choice) {
  const Member* m = chosen_member(description, choice);
  if (m != nullptr && choice.object != nullptr) destroy_chosen(*m, choice.object);
  choice = {static_cast<int>(description.elements.size()), nullptr};
}

void* create_chosen(const Member& m) {
  if (m.form == Form::object) return m.nested->create();
  if (m.form == Form::token_list) return new StringList;
  return new std::string;
}

void destroy_chosen(const Member& m, void* object) {
  if (m.form == Form::object) {
    m.nested->destroy(object);
  } else if (m.form == Form::token_list) {
    delete static_cast<StringList*>(object);
  } else {
    delete static_cast<std::string*>(object);
  }
}

void copy(const ClassDescription& description, void* target, const void* source) {
  for_each_member(description, [&](const Member& m) { copy_member(m, target, source); });
  if (has_choice(description)) {
    copy_choice(description, choice_of(description, target), choice_of(description, source));
  }
}

void swap(const ClassDescription& description, void* a, void* b) {
  for_each_member(description, [&](const Member& m) { swap_member(m, a, b); });
  if (has_choice(description)) {
    std::swap(choice_of(description, a), choice_of(description, b));
  }
}

bool is_occurs_ok(const ClassDescription& description, const void* object) {
  if (has_choice(description)) {
    return choice_of(description, object).chosen != static_cast<int>(description.elements.size());
  }
  bool ok = true;
  for_each_member(description, [&](const Member& m) {
    if (repeats(m)) {
      const std::size_t count = count_of(object, m);
      ok = ok && count >= m.minimum && count <= m.maximum;
    } else {
      ok = ok && (!is_required(description, m) || flag_of(object, m));
    }
  });
  return ok;
}

}  // namespace binding

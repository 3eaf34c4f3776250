#include "gridkit/dictionary.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/records/dictionary_text.h"
#include "gridkit/records/record_design.h"
#include "gridkit/records/record_encoder.h"
#include "gridkit/services/fail.h"
#include "gridkit/text.h"

using gridkit::Error;
using gridkit::quoted;
using gridkit::RecordDesign;
using gridkit::RecordField;

namespace {

// What each gkd_Design really is.
struct OwnedDesign : gkd_Design {
  OwnedDesign(RecordDesign design, gkd_Dictionary* dictionary)
      : gkd_Design{nullptr}, model(std::move(design)), owner(dictionary) {
    name = model.name.c_str();
  }
  OwnedDesign(const OwnedDesign&) = delete;
  OwnedDesign& operator=(const OwnedDesign&) = delete;

  const RecordDesign model;
  gkd_Dictionary* const owner;
};

}  // namespace

struct gkd_Dictionary {
  std::vector<std::unique_ptr<OwnedDesign>> designs;
  std::vector<const RecordDesign*> registered;  // in the order in which they were added
};

namespace {

// Plug-ins leave their dictionaries to the toolkit, so it keeps those of each thread.
std::vector<std::unique_ptr<gkd_Dictionary>>& dictionaries_of_thread() {
  thread_local std::vector<std::unique_ptr<gkd_Dictionary>> dictionaries;
  return dictionaries;
}

// Does the work; a failure becomes a report of the operation, and `failed` its result.
template <class Result, class Work>
Result reporting(gke_Report** err, const char* word, Result failed, const Work& work) noexcept {
  try {
    return work();
  } catch (const Error& error) {
    gridkit::fail(err, word, {error.what()});
  } catch (const std::bad_alloc&) {
    gridkit::fail(err, word, {"out of memory"});
  }
  return failed;
}

void require(const void* argument, const char* message) {
  if (argument == nullptr) throw Error(message);
}

const RecordDesign& model_of(const gkd_Design* design) {
  return static_cast<const OwnedDesign*>(design)->model;
}

std::string name_argument(std::va_list& arguments) {
  const char* name = va_arg(arguments, const char*);
  if (name == nullptr) throw Error("its name is missing");
  return name;
}

std::vector<std::string> items_argument(std::va_list& arguments) {
  std::vector<std::string> items;
  while (const char* item = va_arg(arguments, const char*)) {
    items.emplace_back(item);
    // One too many is left to be refused, so that a list without an end stops here.
    if (items.size() > gridkit::most_items) break;
  }
  return items;
}

RecordField field_argument(int code, std::va_list& arguments) {
  switch (code) {
    case gkd_Enumeration: {
      std::string name = name_argument(arguments);
      return {gkd_Enumeration, std::move(name), items_argument(arguments)};
    }
    case gkd_DoubleArray: {
      std::string name = name_argument(arguments);
      return {gkd_DoubleArray, std::move(name), {}, va_arg(arguments, int)};
    }
    case gkd_Character:
    case gkd_Integer:
    case gkd_Double:
    case gkd_DoubleVector:
      return {static_cast<gkd_FieldType>(code), name_argument(arguments)};
    default:
      throw Error(std::to_string(code) + " is no type code");
  }
}

RecordDesign design_argument(const char* name, std::va_list& arguments) {
  RecordDesign design = gridkit::make_design(name);
  const std::string where = "design " + quoted(name);
  while (const int code = va_arg(arguments, int)) {
    try {
      add_field(design, field_argument(code, arguments));
    } catch (const Error& error) {
      throw Error(where + ", field " + std::to_string(design.fields.size() + 1) + ": " +
                  error.what());
    }
  }
  if (design.fields.empty()) throw Error(where + " has no fields");
  return design;
}

}  // namespace

gkd_Dictionary* gkd_DictionaryCreate(gke_Report** err) {
  return reporting<gkd_Dictionary*>(err, "gkd_DictionaryCreate", nullptr, [] {
    auto& dictionaries = dictionaries_of_thread();
    dictionaries.push_back(std::make_unique<gkd_Dictionary>());
    return dictionaries.back().get();
  });
}

gkd_Design* gkd_DesignCreate(gkd_Dictionary* dictionary, const char* name, gke_Report** err, ...) {
  std::va_list arguments;
  va_start(arguments, err);
  gkd_Design* created = reporting<gkd_Design*>(err, "gkd_DesignCreate", nullptr, [&] {
    require(dictionary, "no dictionary was given");
    require(name, "no name was given");
    dictionary->designs.push_back(
        std::make_unique<OwnedDesign>(design_argument(name, arguments), dictionary));
    return dictionary->designs.back().get();
  });
  va_end(arguments);
  return created;
}

void gkd_DictionaryAddDesign(gkd_Dictionary* dictionary, gkd_Design* design, gke_Report** err) {
  reporting(err, "gkd_DictionaryAddDesign", false, [&] {
    require(dictionary, "no dictionary was given");
    require(design, "no design was given");
    auto& added = *static_cast<OwnedDesign*>(design);
    const std::string& name = added.model.name;
    if (added.owner != dictionary) {
      throw Error("design " + quoted(name) + " belongs to another dictionary");
    }
    for (const RecordDesign* known : dictionary->registered) {
      if (known->name == name) throw Error("there is a design " + quoted(name) + " already");
    }
    if (dictionary->registered.size() == gridkit::most_designs) {
      throw Error("a dictionary has at most " + std::to_string(gridkit::most_designs) + " designs");
    }
    dictionary->registered.push_back(&added.model);
    return true;
  });
}

char* gkd_DictionaryEncodeToString(const gkd_Dictionary* dictionary, gke_Report** err) {
  return reporting<char*>(err, "gkd_DictionaryEncodeToString", nullptr, [&] {
    require(dictionary, "no dictionary was given");
    char* text = gks_Duplicate(gridkit::dictionary_text(dictionary->registered).c_str());
    if (text == nullptr) throw std::bad_alloc();
    return text;
  });
}

int32_t gkd_ObjectSize(const void* object, const gkd_Design* design, gke_Report** err) {
  return reporting<int32_t>(err, "gkd_ObjectSize", -1, [&] {
    require(object, "no record was given");
    require(design, "no design was given");
    return static_cast<int32_t>(gridkit::encoded_size(model_of(design), object));
  });
}

void gkd_ConvertToMIF(int32_t, const void* object, const gkd_Design* design, void* buffer,
                      gke_Report** err) {
  reporting(err, "gkd_ConvertToMIF", false, [&] {
    require(object, "no record was given");
    require(design, "no design was given");
    require(buffer, "no buffer was given");
    // Nothing is written of a record that cannot be encoded whole.
    gridkit::encoded_size(model_of(design), object);
    gridkit::encode_object(model_of(design), object, static_cast<std::byte*>(buffer));
    return true;
  });
}

void gkd_DesignDestroy(gkd_Design* design) {
  if (design == nullptr) return;
  auto* owned = static_cast<OwnedDesign*>(design);
  gkd_Dictionary& owner = *owned->owner;
  std::erase(owner.registered, &owned->model);
  std::erase_if(owner.designs, [owned](const auto& known) { return known.get() == owned; });
}

void gkd_ReleaseDictionaries(void) {
  std::vector<std::unique_ptr<gkd_Dictionary>>().swap(dictionaries_of_thread());
}

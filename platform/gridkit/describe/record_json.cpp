#include "gridkit/record_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <variant>

#include "gridkit/describe/json_text.h"
#include "gridkit/record_decoder.h"

namespace gridkit {

namespace {

using json = nlohmann::ordered_json;

json value_as_json(const DecodedField& field) {
  return std::visit(
      [](const auto& value) -> json {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, EnumerationItem>) return value.text;
        if constexpr (std::is_same_v<Value, char>) return std::string(1, value);
        if constexpr (!std::is_same_v<Value, EnumerationItem> && !std::is_same_v<Value, char>) {
          return value;
        }
      },
      field.value);
}

}  // namespace

std::optional<NonStandardData> read_listed_data(const Product& product, const std::string& name) {
  const auto names = product.data_names();
  if (std::find(names.begin(), names.end(), name) == names.end()) return std::nullopt;
  return product.read_data(name);
}

std::string record_as_json(const std::string& name, const NonStandardData& data) {
  json value = json::object();
  for (const DecodedField& field : decode_record(data.dictionary, data.type, data.bytes)) {
    value[field.name] = value_as_json(field);
  }
  return json_text({{"name", name},
                    {"type", data.type},
                    {"dictionary", data.dictionary},
                    {"size", data.bytes.size()},
                    {"value", value}});
}

}  // namespace gridkit

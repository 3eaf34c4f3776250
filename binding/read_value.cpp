#include "binding/read_value.h"

#include <concepts>
#include <optional>
#include <utility>

#include "binding/value_types.h"
#include "lmx/big_int.h"
#include "lmx/list_tokeniser.h"
#include "lmx/value.h"

namespace binding {

using lmx::elmx_error;

namespace {

std::string quoted_values(ValueSet set) {
  std::string text = "one of";
  const char* separator = " \"";
  for (const Enumerated& entry : set) {
    text += separator;
    text += entry.text;
    text += '"';
    separator = ", \"";
  }
  return text;
}

// Reports the fault where the demand is not met; `words` makes the text of what was expected. Where
// the policy lets it pass, the value's next check follows.
template <class Words>
elmx_error demand(bool met, const ValueSite& site, elmx_error code, Words words) {
  return met ? elmx_error{} : site.fault(code, words());
}

elmx_error check_length(const ValueSite& site) {
  const std::uint32_t most = site.m.max_length;
  return demand(most == 0 || lmx::is_max_length_ok(site.reader.value_text, most), site,
                lmx::error_too_long,
                [&] { return "at most " + std::to_string(most) + " characters"; });
}

elmx_error check_enumerated(const ValueSite& site, const std::string& text) {
  const ValueSet values = site.m.values;
  return demand(values.empty() || number_of(values, text) != 0, site, lmx::error_not_in_enumeration,
                [&] { return quoted_values(values); });
}

// Bounds are compared on the text, so they hold at any length and the conversion cannot overflow.
elmx_error check_integer(const ValueSite& site) {
  const std::string& text = site.reader.value_text;
  const IntegerBounds bounds = site.m.bounds;
  const auto words = [&] {
    return "an integer from " + bounds.lower->digits() + " to " + bounds.upper->digits();
  };
  elmx_error error = demand(lmx::is_valid_integer(text), site, lmx::error_invalid_value,
                            [] { return "an integer"; });
  if (error == 0) error = demand(text >= *bounds.lower, site, lmx::error_below_lower_bound, words);
  if (error == 0) error = demand(text <= *bounds.upper, site, lmx::error_above_upper_bound, words);
  return error;
}

// Bounds are compared in the member's own type. NaN is refused by the lower one.
template <std::floating_point T>
elmx_error check_limit(const ValueSite& site, T value) {
  if (site.m.limit == 0) return {};
  const T limit = static_cast<T>(site.m.limit);
  const auto words = [&] {
    const std::string degrees = std::to_string(static_cast<int>(site.m.limit));
    return "a number from -" + degrees + " to " + degrees;
  };
  const elmx_error error = demand(value >= -limit, site, lmx::error_below_lower_bound, words);
  if (error != 0) return error;
  return demand(limit >= value, site, lmx::error_above_upper_bound, words);
}

template <std::integral T>
T to_integer(const std::string& text) {
  if constexpr (std::is_same_v<T, std::int32_t>) {
    return lmx::to_int32(text);
  } else if constexpr (std::is_same_v<T, std::uint32_t>) {
    return lmx::to_uint32(text);
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    return lmx::to_int64(text);
  } else if constexpr (std::is_same_v<T, std::uint64_t>) {
    return lmx::to_uint64(text);
  } else {
    static_assert(std::is_same_v<T, std::uint8_t>);
    return lmx::to_uint8(text);
  }
}

// --- The checks and the conversion of each type --------------------------------------------------

elmx_error convert(const ValueSite& site, std::string& target) {
  return store_text(site, target);
}

template <std::integral T>
elmx_error convert(const ValueSite& site, T& target) {
  const elmx_error error = check_integer(site);
  if (error == 0) target = to_integer<T>(site.reader.value_text);
  return error;
}

template <std::floating_point T>
elmx_error convert(const ValueSite& site, T& target) {
  const std::string& text = site.reader.value_text;
  const std::optional<double> number = lmx::to_valid_double(text);
  elmx_error error =
      demand(number.has_value(), site, lmx::error_invalid_value, [] { return "a number"; });
  if (error != 0) return error;
  const T value = static_cast<T>(number ? *number : lmx::to_double(text));
  error = check_limit(site, value);
  if (error == 0) target = value;
  return error;
}

elmx_error convert(const ValueSite& site, bool& target) {
  const std::string& text = site.reader.value_text;
  const elmx_error error = demand(lmx::is_valid_bool(text), site, lmx::error_invalid_value,
                                  [] { return "true, false, 1 or 0"; });
  if (error == 0) target = lmx::to_bool(text);
  return error;
}

elmx_error convert(const ValueSite& site, lmx::c_datetime& target) {
  lmx::c_datetime read;
  read = site.reader.value_text;
  const bool valid = !read.text().empty();  // only an invalid text leaves it empty
  const elmx_error error = demand(valid, site, lmx::error_invalid_value, [] {
    return "a date and time such as 2008-03-10T13:32:20.083162Z";
  });
  if (error == 0) target = read;
  return error;
}

elmx_error store_scalar(const ValueSite& site, void* held) {
  return with_value_type(site.m.type, [&]<class T>(std::type_identity<T>) {
    auto& scalar = *static_cast<Held<T>*>(held);
    const elmx_error error = convert(site, scalar.value);
    if (error == 0) scalar.is_set = true;
    return error;
  });
}

elmx_error store_entry(const ValueSite& site, StringList& entries) {
  if (const elmx_error error = check_length(site); error != 0) return error;
  std::string& entry = entries.add();
  lmx::vtostring(entry, site.reader.value_text);
  return check_enumerated(site, entry);
}

}  // namespace

elmx_error ValueSite::fault(elmx_error code, std::string expected) const {
  return reader.handle_error(code, name, source_tag, m.event, std::move(expected));
}

lmx::elmx_whitespace whitespace_of(const Member& m) {
  if (m.form == Form::token_list) {
    return m.role == Role::element ? lmx::whitespace_preserve : lmx::whitespace_collapse;
  }
  return m.type == ValueType::string ? lmx::whitespace_preserve : lmx::whitespace_collapse;
}

elmx_error store_value(const ValueSite& site, void* held) {
  if (site.m.form == Form::string_list) return store_entry(site, *static_cast<StringList*>(held));
  if (site.m.form != Form::token_list) return store_scalar(site, held);
  auto& list = *static_cast<TokenList*>(held);
  const elmx_error error = store_tokens(site, list.entries);
  if (error == 0) list.is_set = true;
  return error;
}

elmx_error store_text(const ValueSite& site, std::string& text) {
  if (const elmx_error error = check_length(site); error != 0) return error;
  lmx::vtostring(text, site.reader.value_text);
  return check_enumerated(site, text);
}

elmx_error store_tokens(const ValueSite& site, StringList& entries) {
  lmx::c_xml_list_tokeniser tokens(site.reader.value_text);
  std::string token;
  while (tokens.get(&token)) {
    std::string& entry = entries.add();
    lmx::vtostring(entry, token);
    if (const elmx_error error = check_enumerated(site, entry); error != 0) return error;
  }
  return {};
}

}  // namespace binding

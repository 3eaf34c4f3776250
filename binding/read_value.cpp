#include "binding/read_value.h"

#include <optional>

#include "lmx/list_tokeniser.h"
#include "lmx/value.h"

namespace binding {

namespace {

std::string quoted_values(value_set set) {
  std::string text = "one of";
  for (const enumerated& entry : set) {
    text += text.size() == 6 ? " \"" : ", \"";
    text += entry.text;
    text += '"';
  }
  return text;
}

lmx::elmx_error check_length(const value_site& site) {
  const std::string& text = site.reader.value_text;
  if (site.m.max_length == 0 || lmx::is_max_length_ok(text, site.m.max_length)) return {};
  return site.fault(lmx::error_too_long,
                    "at most " + std::to_string(site.m.max_length) + " characters");
}

lmx::elmx_error check_enumerated(const value_site& site, const std::string& text) {
  if (site.m.values.empty() || number_of(site.m.values, text) != 0) return {};
  return site.fault(lmx::error_not_in_enumeration, quoted_values(site.m.values));
}

lmx::elmx_error store_string(const value_site& site, std::string& target) {
  if (const lmx::elmx_error error = check_length(site); error != 0) return error;
  lmx::vtostring(target, site.reader.value_text);
  return check_enumerated(site, target);
}

std::string bounds_text(const member& m) {
  if (m.limit == 0) {
    return "an integer from " + m.bounds.lower->digits() + " to " + m.bounds.upper->digits();
  }
  const std::string degrees = std::to_string(static_cast<int>(m.limit));
  return "a number from -" + degrees + " to " + degrees;
}

// Bounds are compared on the text, so they hold at any length and the conversion cannot overflow.
lmx::elmx_error check_integer(const value_site& site) {
  const std::string& text = site.reader.value_text;
  if (!lmx::is_valid_integer(text)) {
    if (const auto error = site.fault(lmx::error_invalid_value, "an integer"); error != 0) {
      return error;
    }
  }
  if (!(text >= *site.m.bounds.lower)) {
    if (const auto error = site.fault(lmx::error_below_lower_bound, bounds_text(site.m));
        error != 0) {
      return error;
    }
  }
  if (text <= *site.m.bounds.upper) return {};
  return site.fault(lmx::error_above_upper_bound, bounds_text(site.m));
}

// Bounds are compared in the member's own type. NaN is refused by the lower one.
template <class T>
lmx::elmx_error store_floating(const value_site& site, T& target) {
  // Most numbers come without blanks and convert as they stand.
  std::string& text = site.reader.value_text;
  std::optional<double> number = lmx::to_valid_double(text);
  if (!number) {
    lmx::collapse(text);
    number = lmx::to_valid_double(text);
  }
  if (!number) {
    if (const auto error = site.fault(lmx::error_invalid_value, "a number"); error != 0) {
      return error;
    }
    number = lmx::to_double(text);
  }
  const T value = static_cast<T>(*number);
  if (site.m.limit != 0) {
    const T limit = static_cast<T>(site.m.limit);
    if (!(value >= -limit)) {
      if (const auto error = site.fault(lmx::error_below_lower_bound, bounds_text(site.m));
          error != 0) {
        return error;
      }
    }
    if (!(limit >= value)) {
      if (const auto error = site.fault(lmx::error_above_upper_bound, bounds_text(site.m));
          error != 0) {
        return error;
      }
    }
  }
  target = value;
  return {};
}

lmx::elmx_error store_boolean(const value_site& site, bool& target) {
  if (!lmx::is_valid_bool(site.reader.value_text)) {
    if (const auto error = site.fault(lmx::error_invalid_value, "true, false, 1 or 0");
        error != 0) {
      return error;
    }
  }
  target = lmx::to_bool(site.reader.value_text);
  return {};
}

lmx::elmx_error store_date_time(const value_site& site, lmx::c_datetime& target) {
  lmx::c_datetime read;
  read = site.reader.value_text;
  if (read.text().empty()) {  // which no valid text leaves it
    if (const auto error = site.fault(lmx::error_invalid_value,
                                      "a date and time such as 2008-03-10T13:32:20.083162Z");
        error != 0) {
      return error;
    }
  }
  target = read;
  return {};
}

template <class T, class Store>
lmx::elmx_error store_held(void* value, Store store) {
  auto& target = *static_cast<held<T>*>(value);
  const lmx::elmx_error error = store(target.value);
  if (error == 0) target.is_set = true;
  return error;
}

template <class T, class Convert>
lmx::elmx_error store_integer(const value_site& site, void* value, Convert convert) {
  return store_held<T>(value, [&](T& target) {
    const lmx::elmx_error error = check_integer(site);
    if (error == 0) target = convert(site.reader.value_text);
    return error;
  });
}

}  // namespace

lmx::elmx_error value_site::fault(lmx::elmx_error code, std::string expected) const {
  return reader.handle_error(code, name, source_tag, m.event, std::move(expected));
}

lmx::elmx_whitespace whitespace_of(const member& m) {
  if (m.form == form::token_list) {
    return m.role == role::element ? lmx::whitespace_preserve : lmx::whitespace_collapse;
  }
  const bool kept = m.type == value_type::string || m.type == value_type::float64 ||
                    m.type == value_type::float32;
  return kept ? lmx::whitespace_preserve : lmx::whitespace_collapse;
}

lmx::elmx_error store_scalar(const value_site& site, void* value) {
  switch (site.m.type) {
    case value_type::string:
      return store_held<std::string>(value, [&](auto& t) { return store_string(site, t); });
    case value_type::float64:
      return store_held<double>(value, [&](auto& t) { return store_floating(site, t); });
    case value_type::float32:
      return store_held<float>(value, [&](auto& t) { return store_floating(site, t); });
    case value_type::boolean:
      return store_held<bool>(value, [&](auto& t) { return store_boolean(site, t); });
    case value_type::date_time:
      return store_held<lmx::c_datetime>(value, [&](auto& t) { return store_date_time(site, t); });
    case value_type::int32:
      return store_integer<std::int32_t>(site, value, lmx::to_int32);
    case value_type::uint32:
      return store_integer<std::uint32_t>(site, value, lmx::to_uint32);
    case value_type::int64:
      return store_integer<std::int64_t>(site, value, lmx::to_int64);
    case value_type::uint64:
      return store_integer<std::uint64_t>(site, value, lmx::to_uint64);
    case value_type::uint8:
      return store_integer<std::uint8_t>(site, value, lmx::to_uint8);
  }
  return {};
}

lmx::elmx_error store_tokens(const value_site& site, string_list& entries) {
  lmx::c_xml_list_tokeniser tokens(site.reader.value_text);
  std::string token;
  while (tokens.get(&token)) {
    std::string& entry = entries.add();
    lmx::vtostring(entry, token);
    if (const lmx::elmx_error error = check_enumerated(site, entry); error != 0) return error;
  }
  return {};
}

lmx::elmx_error store_entry(const value_site& site, string_list& entries) {
  if (const lmx::elmx_error error = check_length(site); error != 0) return error;
  std::string& entry = entries.add();
  lmx::vtostring(entry, site.reader.value_text);
  return check_enumerated(site, entry);
}

}  // namespace binding

#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace report {

// A text as it stands in HTML, in an element or in a quoted attribute. Bytes that are no UTF-8 and
// control characters come as U+FFFD.
std::string escape(std::string_view text);

// Base 64 of bytes, as data: URLs hold it.
std::string base64(std::span<const std::byte> bytes);

// A template with every {{name}} replaced by its value, which is HTML and is not looked at again.
// A name without a value is a fault of the program: std::logic_error.
std::string fill(std::string_view page,
                 std::initializer_list<std::pair<std::string_view, std::string_view>> values);

// A number in as few characters as `digits` significant ones need.
std::string number(double value, int digits = 6);

// A number with so many digits behind the point.
std::string fixed(double value, int decimals);

}  // namespace report

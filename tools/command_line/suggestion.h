#pragma once

#include <span>
#include <string>
#include <string_view>

// What somebody who misspelt a word may have meant: "; did you mean "info"?", or nothing where no
// candidate is close. Case counts for nothing.
std::string did_you_mean(std::string_view word, std::span<const std::string> candidates);

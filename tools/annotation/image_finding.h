#pragma once

#include <string>
#include <string_view>

// What a finding concerns that makes every pixel of an image wrong.
inline constexpr std::string_view sample_type_fact = "sample type";

// One fact of a product's image files that is not what it should be.
struct ImageFinding {
  // Whose word `expected` is: the annotation's, that of the image file's own header, or what every
  // file of its format has.
  enum class Authority { annotation, header, format };

  std::string path;  // the image file, or the annotation for a fact of its own
  std::string what;  // such as "record width"
  std::string found;
  std::string expected;
  Authority authority = Authority::annotation;
  // The pixels would be wrong, incomplete or misplaced; otherwise something worth a look.
  bool serious = true;

  // One line: "PATH: WHAT: found FOUND, the annotation says EXPECTED", or "the file's own header"
  // or "the format". Control characters, which names in an annotation may hold, are told as "?".
  std::string line() const;
};

// "annotation", "header" or "format".
std::string_view name_of(ImageFinding::Authority authority);

#include "tools/annotation/image_finding.h"

#include <algorithm>
#include <cctype>

std::string_view name_of(ImageFinding::Authority authority) {
  switch (authority) {
    case ImageFinding::Authority::annotation:
      return "annotation";
    case ImageFinding::Authority::header:
      return "header";
    case ImageFinding::Authority::format:
      return "format";
  }
  return "";
}

std::string ImageFinding::line() const {
  const std::string article =
      authority == ImageFinding::Authority::header ? "the file's own " : "the ";
  std::string text = path + ": " + what + ": found " + found + ", " + article;
  text += name_of(authority);
  text += " says " + expected;
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; }, '?');
  return text;
}

#include "tools/annotation/image_finding.h"

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

std::string ImageFinding::text() const {
  const std::string article =
      authority == ImageFinding::Authority::header ? "the file's own " : "the ";
  return what + ": found " + found + ", " + article + std::string(name_of(authority)) + " says " +
         expected;
}

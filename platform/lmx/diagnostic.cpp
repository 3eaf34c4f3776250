#include "lmx/diagnostic.h"

namespace lmx {

std::string Diagnostic::message() const {
  std::string text = meaning(code);
  if (!found.empty()) text += ": found " + found;
  if (!expected.empty()) text += (found.empty() ? ": expected " : ", expected ") + expected;
  return text;
}

}  // namespace lmx

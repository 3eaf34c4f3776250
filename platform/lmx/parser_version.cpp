#include "lmx/parser_version.h"

#include <expat.h>

namespace lmx {

std::string parser_version() {
  const XML_Expat_Version version = XML_ExpatVersionInfo();
  return std::to_string(version.major) + '.' + std::to_string(version.minor) + '.' +
         std::to_string(version.micro);
}

}  // namespace lmx

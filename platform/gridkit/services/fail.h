#pragma once

#include <initializer_list>
#include <new>
#include <string>
#include <string_view>

#include "gridkit/report.h"

namespace gridkit {

// Stores a report of an operation's failure in its slot, if there is one. The word is the
// operation's own name; the message is put together from its parts. Never throws.
inline void fail(gke_Report** err, const char* word, std::initializer_list<std::string_view> parts,
                 int line = __builtin_LINE()) noexcept {
  if (err == nullptr) return;
  try {
    std::string message;
    for (const std::string_view part : parts) message += part;
    *err = gke_CreateErrorReport(word, line, gke_SeverityError, *err, message.c_str(), 0);
  } catch (const std::bad_alloc&) {
    *err = gke_CreateErrorReport(word, line, gke_SeverityError, *err, "out of memory", 0);
  }
}

}  // namespace gridkit

#pragma once

#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "gridkit/companion.h"
#include "gridkit/report.h"

namespace companion {

// Why an operation of the companion ends, in the parts of a gkc_Error.
class Failure : public std::exception {
 public:
  Failure(gkc_ErrorCode what_kind, std::string sentence)
      : code(what_kind), message(std::move(sentence)) {}
  Failure(gkc_ErrorCode what_kind, const std::string& file, const std::string& fault)
      : code(what_kind), path(file), message(file + ": " + fault) {}

  const char* what() const noexcept override { return message.c_str(); }

  gkc_ErrorCode code;
  std::string path;
  std::string element;
  std::uint64_t text_line = 0;
  std::int64_t image_line = -1;
  std::string message;
};

// A report's chain as a sentence, newest first; the report is deleted.
std::string take_report(gke_Report* report);

// Fills a caller's error, null or as large as its size says. Texts that are too long are cut ahead
// of a character of UTF-8.
void tell(gkc_Error* error, const Failure& failure) noexcept;
void tell(gkc_Error* error, gkc_ErrorCode code, const char* message) noexcept;

// Calls an operation and tells of what it throws. The result is a gkc_ErrorCode.
template <class Operation>
std::int32_t contain(gkc_Error* error, Operation operation) noexcept {
  try {
    operation();
    return gkc_NoError;
  } catch (const Failure& failure) {
    tell(error, failure);
    return failure.code;
  } catch (const std::bad_alloc&) {
    tell(error, gkc_NoMemory, "out of memory");
    return gkc_NoMemory;
  } catch (const std::exception& fault) {
    tell(error, gkc_OurFault, fault.what());
    return gkc_OurFault;
  }
}

}  // namespace companion

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "gridkit/gridkit.h"

// The host's C functions as this driver uses them: handles that end by themselves, and errors told
// to GDAL in the host's own words.
namespace gridkit_gdal {

// Of one driver call: handed to a function of the host, then looked at.
class HostError {
 public:
  HostError() = default;
  ~HostError() { gridkit_error_free(error_); }
  HostError(const HostError&) = delete;
  HostError& operator=(const HostError&) = delete;

  // Where a function of the host leaves its error. An earlier one ends.
  gridkit_error** out();

  int32_t code() const { return gridkit_error_code(error_); }
  std::string message() const { return gridkit_error_message(error_); }

  // Tells GDAL, as a failure.
  void report() const;

 private:
  gridkit_error* error_ = nullptr;
};

struct HostFree {
  void operator()(void* memory) const { gridkit_free(memory); }
};
using HostText = std::unique_ptr<char, HostFree>;

// An open product, shared by a dataset and its band.
using Product = std::shared_ptr<const gridkit_product>;

// Null where it cannot be opened, as the error tells.
Product open_product(const std::string& path, HostError& error);

// A struct of the host's with its size, all else 0.
template <class T>
T sized() {
  T made{};
  made.size = sizeof made;
  return made;
}

}  // namespace gridkit_gdal

#include "gridkit/services/partial_stream.h"

#include <cerrno>

#include "gridkit/error.h"
#include "gridkit/os_error.h"

namespace gridkit {

namespace {

[[noreturn]] void refuse(const std::string& target) {
  throw Error(target + ": cannot be written: " + os_error_in_words(errno));
}

}  // namespace

PartialStream::PartialStream(const std::string& target, Existing existing)
    : target_(target), file_(target, existing), stream_(std::fopen(file_.path().c_str(), "wb")) {
  if (stream_ == nullptr) refuse(target_);
}

void PartialStream::write(std::span<const std::byte> bytes) {
  if (bytes.empty()) return;  // and may be at no place
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream_.get()) != bytes.size()) refuse(target_);
}

void PartialStream::close() {
  if (std::fclose(stream_.release()) != 0) refuse(target_);
}

}  // namespace gridkit

#pragma once

#include <string>

#include "gridkit/error.h"

// The sentence of an error without the path that leads it, to stand in a message that is led by
// that path already.
inline std::string reason_of(const gridkit::Error& error, const std::string& path) {
  const std::string sentence = error.sentence();
  const std::string lead = path + ": ";
  return sentence.starts_with(lead) ? sentence.substr(lead.size()) : sentence;
}

// The same error with its sentence led by that path, once.
inline gridkit::Error led_by(const std::string& path, const gridkit::Error& error) {
  return {path + ": " + reason_of(error, path), {}, error.calls()};
}

#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace gridkit {

// A failure of the host API: its text says what failed, where, and why.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  // One that calls of a plug-in or of the toolkit reported: what failed; `cause`, what they report
  // as its first cause, or empty; and `calls`, the whole chain of their reports, "WORD: MESSAGE;
  // ...". The text is "WHAT: CALLS".
  Error(const std::string& what_failed, const std::string& cause, const std::string& calls)
      : std::runtime_error(calls.empty() ? what_failed : what_failed + ": " + calls),
        parts_(std::make_shared<const Parts>(
            Parts{cause.empty() ? what_failed : what_failed + ": " + cause, calls})) {}

  // What failed, and why as far as that is known: for users of a program, who know nothing of
  // calls.
  std::string sentence() const { return parts_ == nullptr ? what() : parts_->sentence; }

  // For those who look for what went wrong inside; empty where no call reported anything.
  std::string calls() const { return parts_ == nullptr ? std::string() : parts_->calls; }

 private:
  struct Parts {
    std::string sentence;
    std::string calls;
  };
  std::shared_ptr<const Parts> parts_;  // shared, as copies of exceptions must not fail
};

// Somebody asked for the end of the work.
class Cancelled : public Error {
 public:
  using Error::Error;
};

// The sentence of an error without the path that leads it, to stand in a message that is led by
// that path already.
inline std::string reason_of(const Error& error, const std::string& path) {
  const std::string sentence = error.sentence();
  const std::string lead = path + ": ";
  return sentence.starts_with(lead) ? sentence.substr(lead.size()) : sentence;
}

// The same error with its sentence led by that path, once.
inline Error led_by(const std::string& path, const Error& error) {
  return {path + ": " + reason_of(error, path), {}, error.calls()};
}

}  // namespace gridkit

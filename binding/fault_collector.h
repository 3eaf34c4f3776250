#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "lmx/diagnostic.h"
#include "lmx/reader.h"

namespace binding {

// A tolerant reading policy that lists what is wrong with a document.
//
// It lets the read go on past a fault after which the reader knows where it is: a value that is not
// of its type, out of its bounds or not in its set, a text too long, an element inside a text, an
// unknown or a missing attribute, a missing element, an element that stands empty. Values stay as
// they were read. After any other fault, such as an element out of place or a text that is no XML,
// everything that follows would be told wrong, so that fault is the last.
class FaultCollector {
 public:
  using Choice = std::function<bool(const lmx::Diagnostic&)>;

  static constexpr std::size_t default_most = 1000;

  // A fault more than `most` ends the read and is not listed.
  explicit FaultCollector(std::size_t most = default_most) : most_(most) {}

  // Past a fault that `lets_pass` does not take, the read does not go on either.
  explicit FaultCollector(Choice lets_pass) : lets_pass_(std::move(lets_pass)) {}

  FaultCollector(const FaultCollector&) = delete;
  FaultCollector& operator=(const FaultCollector&) = delete;
  ~FaultCollector() = default;

  // Sets the policy of a reader. Both must live while it reads.
  void watch(lmx::c_xml_reader& reader);

  // In the order of the document; the first is the one that a strict read ends with.
  const std::vector<lmx::Diagnostic>& faults() const { return faults_; }

  // Whether the document was read to its end, so that no fault is missing from the list.
  bool saw_all() const { return saw_all_; }

 private:
  lmx::elmx_error judge(lmx::c_xml_reader& reader, const lmx::Diagnostic& fault);
  bool can_pass(lmx::c_xml_reader& reader, const lmx::Diagnostic& fault) const;

  std::size_t most_ = default_most;
  Choice lets_pass_;
  std::vector<lmx::Diagnostic> faults_;
  bool saw_all_ = true;
};

}  // namespace binding

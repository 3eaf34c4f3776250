#pragma once

#include <cstddef>
#include <vector>

#include "lmx/diagnostic.h"
#include "lmx/reader.h"

// A tolerant reading policy that lists what is wrong with a document.
//
// It lets the read go on past a fault after which the reader still knows where it is: a value that
// is not of its type, out of its bounds or not in its set, a text too long, an unknown or a missing
// attribute, a missing element, an element that stands empty. The values stay as they were read.
// After any other fault, such as an element out of place or a text that is no XML, everything that
// follows would be told wrong, so that fault is the last.
class FaultCollector {
 public:
  // A fault more than `most` ends the read and is not listed.
  explicit FaultCollector(std::size_t most = default_most) : most_(most) {}

  static constexpr std::size_t default_most = 1000;

  // Sets the policy of a reader, which this object must outlive.
  void watch(lmx::c_xml_reader& reader);

  // In the order of the document; the first is the one that a strict read ends with.
  const std::vector<lmx::Diagnostic>& faults() const { return faults_; }

  // Whether the document was read to its end, so that no fault is missing from the list.
  bool saw_all() const { return saw_all_; }

 private:
  lmx::elmx_error judge(const lmx::Diagnostic& fault);

  std::size_t most_;
  std::vector<lmx::Diagnostic> faults_;
  bool saw_all_ = true;
};

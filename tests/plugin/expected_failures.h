#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/fake_toolkit.h"

// What must come of a life in which one call fails: told step by step, apart from the plug-in.

using Losses = std::map<std::string, int>;

struct Expectation {
  std::string outcome;                 // of the step; steps that need it are left out
  std::vector<PrintedReport> printed;  // newest of a chain first
  Losses lost;                         // left allocated for good by the step
};

// A step of a life without a failure. Throws std::out_of_range for an unknown step.
Expectation whole_step(const std::string& variant, const std::string& step);

// A step in which the `nth` of its calls of the operation, from 1, fails. Throws std::out_of_range
// where nothing is told of that failure.
Expectation failing_step(const std::string& variant, const std::string& step,
                         const std::string& operation, int nth);

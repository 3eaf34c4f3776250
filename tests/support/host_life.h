#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/plugin.h"
#include "tools/simulate/options.h"

// A product's whole life through the host's own interface, and what came of each step.
struct HostStep {
  std::string name;
  // What the host delivered, pixels and data as a check sum; or "error: " and its text; or "no
  // memory", for an allocation failure that the host's own functions pass on.
  std::string outcome;
  long calls = 0;  // what `watched` answered at the end of the step
};

// Recognise, open, open again, list, read data, every layer with its pixels and its map, close.
// Steps that need what an earlier one did not give are left out.
std::vector<HostStep> host_life(const std::shared_ptr<gridkit::Plugin>& plugin,
                                const std::string& path, const std::function<long()>& watched);

inline bool was_refused(const HostStep& step) {
  return step.outcome.starts_with("error: ") || step.outcome == "no memory";
}

// The step in which the call fell; null when the life had fewer calls.
const HostStep* step_of_call(const std::vector<HostStep>& steps, long call);

// Whether all steps but one, null for none, came out as in the whole life; those that need what
// that one did not give may be missing.
testing::AssertionResult is_like(const std::vector<HostStep>& steps,
                                 const std::vector<HostStep>& whole, const HostStep* failed);

// A product of 70 x 70 pixels with two images, written below `folder`; its annotation's path. The
// second image of a complex product lacks its last lines.
std::string small_product(const std::string& variant, const std::string& folder,
                          simulate::Profile profile = simulate::Profile::minimal,
                          const std::string& version = "4.1");

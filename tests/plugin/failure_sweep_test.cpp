// A product's life on the tests' own toolkit, in which every call of every operation fails in turn.
// What must come of each failure stands in expected_failures.cpp.

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin/expected_failures.h"
#include "plugin/faulted_life.h"
#include "support/fake_toolkit.h"
#include "support/fault_count.h"
#include "support/toolkit_operations.h"

namespace {

const char* const variants[] = {"SSC", "MGD", "GEC", "EEC"};

std::vector<LifeStep> live_with(const std::string& variant, const std::string& operation,
                                int failing_call) {
  reset_toolkit();
  fail_record_allocation(operation == record_allocation ? failing_call : 0);
  if (operation != record_allocation) toolkit().fail_at[operation] = failing_call;
  return live(variant, operation);
}

// The step in which the call fell, and its number among the step's calls; no step when the life had
// fewer calls.
struct Place {
  std::string step;
  int nth = 0;
};
Place place_of(const std::vector<LifeStep>& steps, int call) {
  int before = 0;
  for (const LifeStep& step : steps) {
    if (call <= step.calls) return {step.name, call - before};
    before = step.calls;
  }
  return {};
}

Losses sum(Losses a, const Losses& b) {
  for (const auto& [kind, count] : b) a[kind] += count;
  return a;
}

void expect_life(const std::string& variant, const std::vector<LifeStep>& steps,
                 const Place& failure, const Expectation& expected) {
  Losses lost;
  for (const LifeStep& step : steps) {
    const bool failed = step.name == failure.step;
    const Expectation e = failed ? expected : whole_step(variant, step.name);
    EXPECT_EQ(step.outcome, e.outcome) << step.name;
    lost = sum(lost, e.lost);
  }
  EXPECT_EQ(toolkit().printed, expected.printed);
  EXPECT_EQ(left_allocated(), lost);
}

// Steps that must be missing: those of a product, or of a layer, that did not come to be.
std::size_t steps_left_out(const std::string& variant, const Place& failure,
                           const std::string& outcome) {
  const bool has_model = variant == "SSC" || variant == "MGD";
  const bool is_record = outcome.starts_with("record");
  if (failure.step == "open" && !is_record) return has_model ? 16 : 15;
  return failure.step.ends_with(" open") && outcome == "none" ? 4 : 0;
}

class FailureSweep : public testing::TestWithParam<const char*> {};

TEST_P(FailureSweep, ALifeWithoutFailureLosesWhatIsTold) {
  const auto steps = live_with(GetParam(), "none", 0);
  expect_life(GetParam(), steps, {}, {});
  EXPECT_EQ(steps.back().name, "close");
}

TEST_P(FailureSweep, EveryFailureEndsAsTold) {
  const std::string variant = GetParam();
  const std::size_t whole = live_with(variant, "none", 0).size();
  std::vector<std::string> operations = {record_allocation};
  for (const ToolkitOperation& operation : toolkit_operations) {
    if (operation.why_never.empty()) operations.emplace_back(operation.name);
  }
  FaultCount tried;
  for (const std::string& operation : operations) {
    for (int call = 1;; ++call) {
      const auto steps = live_with(variant, operation, call);
      const Place failure = place_of(steps, call);
      if (failure.step.empty()) break;
      tried.add(operation);
      SCOPED_TRACE(operation + ", call " + std::to_string(call) + ": the " +
                   std::to_string(failure.nth) + ". of " + failure.step);
      try {
        const Expectation expected = failing_step(variant, failure.step, operation, failure.nth);
        expect_life(variant, steps, failure, expected);
        EXPECT_EQ(steps.size() + steps_left_out(variant, failure, expected.outcome), whole);
      } catch (const std::out_of_range& untold) {
        ADD_FAILURE() << untold.what();
      }
    }
  }
  tried.print("plug-in, " + variant);
  EXPECT_GT(tried.total(), 100) << "the sweep must reach its operations";
  reset_toolkit();
}

INSTANTIATE_TEST_SUITE_P(Variants, FailureSweep, testing::ValuesIn(variants),
                         [](const auto& variant) { return variant.param; });

// A new operation cannot be forgotten: what the plug-in calls is what the sweeps know.
TEST(FailureSweep, KnowsEveryOperationThatThePluginCalls) {
  EXPECT_EQ(operations_called_by(TSX_PLUGIN, TSX_HOST), known_operations());
}

// Every operation that can fail is reached by the life of one variant or another.
TEST(FailureSweep, ReachesEveryOperationThatCanFail) {
  for (const ToolkitOperation& operation : toolkit_operations) {
    if (!operation.why_never.empty()) continue;
    int calls = 0;
    for (const char* variant : variants) {
      calls += live_with(variant, std::string(operation.name), 0).back().calls;
    }
    EXPECT_GT(calls, 0) << operation.name;
  }
}

}  // namespace

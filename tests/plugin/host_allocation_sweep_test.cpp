// Lives of simulated products through the host's own interface in which operator new fails once, at
// every index: of the plug-in, with its annotation classes, and of the host's library. What GDAL,
// PROJ and other libraries allocate for themselves is left alone.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "gridkit/plugin.h"
#include "handlepool/handlepool.h"
#include "support/counted_new.h"
#include "support/fault_count.h"
#include "support/host_life.h"
#include "support/own_allocations.h"
#include "support/scratch_folder.h"

namespace {

// A usual annotation asks for memory thousands of times; of so many calls not every one is tried
// unless the environment has TSX_EVERY_ALLOCATION. The sanitizers' build is slower by far.
long most_points() {
  if (std::getenv("TSX_EVERY_ALLOCATION") != nullptr) return std::numeric_limits<long>::max();
#ifdef __SANITIZE_ADDRESS__
  return 150;
#else
  return 1000;
#endif
}

struct Case {
  const char* name;
  const char* variant;
  simulate::Profile profile;
  const char* version;
};
std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.name;
}

class HostAllocationSweep : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(own_allocations::find({"tsx.so", "libgridkit.so"}));
    first_free = ::dup(0);
    ::close(first_free);
  }

  // One life; the given call of operator new fails, 0 for none. What it leaves allocated is added
  // to counted_new().live.
  std::vector<HostStep> live(long failing_call) {
    counted_new().counts = &own_allocations::counts;
    counted_new().calls = 0;
    counted_new().fail_at = failing_call;
    held.clear();
    auto steps = host_life(plugin, path, [this] {
      held.push_back(counted_new().live);
      return counted_new().calls;
    });
    counted_new().counts = nullptr;
    // Handles that are lost on purpose; their file numbers are needed again.
    ::close_range(static_cast<unsigned>(first_free), ~0U, 0);
    return steps;
  }

  // Lives with the failing call, then without one, and checks both.
  void try_call(long call) {
    SCOPED_TRACE("allocation " + std::to_string(call));
    const long before = counted_new().live;
    const auto steps = live(call);
    const HostStep* failed = step_of_call(steps, call);
    ASSERT_NE(failed, nullptr);
    SCOPED_TRACE(failed->name + ": " + failed->outcome);
    EXPECT_TRUE(is_like(steps, whole, failed));
    const auto same = [&](const HostStep& step) {
      return step.name == failed->name && step.outcome == failed->outcome;
    };
    // Recognition fails in silence.
    const bool is_told = failed->name == "identify" && failed->outcome == "none";
    EXPECT_TRUE(was_refused(*failed) || is_told || std::any_of(whole.begin(), whole.end(), same));
    EXPECT_FALSE(failed->outcome.ends_with(": ")) << "without a reason";
    EXPECT_TRUE(is_like(live(0), whole, nullptr)) << "the life after it";
    EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
    expect_loss(*failed, counted_new().live - before - regular_loss);
  }

  // What a life with a failure in that step may leave allocated.
  void expect_loss(const HostStep& failed, long lost) const {
    if (failed.name == "open" && was_refused(failed)) {
      // Nothing; the annotation's handle; that and the record's three blocks; or, once the
      // annotation is bound, all that an open product holds.
      const bool is_told = lost == 0 || lost == 1 || lost == 4;
      EXPECT_TRUE(is_told || (lost > 4 && lost <= held_by_open)) << lost;
      return;
    }
    // Every further open of a product loses its handle of the annotation.
    long most = 1;
    // A detected read that fails keeps its rectangle; the reports of a projection are left behind.
    if (failed.name.ends_with("pixels")) most += 1;
    if (failed.name.ends_with("projection")) most += 3;
    EXPECT_LE(lost, most);
    EXPECT_GE(lost, failed.name == "open again" ? 0 : 1);
  }

  const ScratchFolder scratch;
  const std::string path =
      small_product(GetParam().variant, scratch.path(), GetParam().profile, GetParam().version);
  const std::shared_ptr<gridkit::Plugin> plugin = gridkit::Plugin::load(TSX_PLUGIN);
  std::vector<HostStep> whole;
  std::vector<long> held;  // live blocks at the end of each step
  long regular_loss = 0;   // of a life without a failure
  long held_by_open = 0;
  int first_free = -1;
};

TEST_P(HostAllocationSweep, EveryFailureIsRefusedAndHarmsNoOtherLife) {
  live(0);  // what is made once for the process
  const long before = counted_new().live;
  whole = live(0);
  regular_loss = counted_new().live - before;
  EXPECT_EQ(regular_loss, 1) << "the handle of the second open";
  held_by_open = held[1] - before;
  const long total = counted_new().calls;
  testing::internal::CaptureStderr();  // reports that the host has no error for
  FaultCount tried;
  const long stride = 1 + (total - 1) / most_points();
  for (long call = 1; call <= total && !HasFatalFailure(); call += stride) {
    try_call(call);
    tried.add("operator new");
  }
  testing::internal::GetCapturedStderr();
  tried.print(std::string("host, ") + GetParam().name + ", " + std::to_string(total) +
              " allocations, every " + std::to_string(stride) + ". fails");
  EXPECT_GE(tried.total(), total / stride);
}

using enum simulate::Profile;
INSTANTIATE_TEST_SUITE_P(
    Products, HostAllocationSweep,
    testing::Values(Case{"SSC", "SSC", minimal, "4.1"}, Case{"MGD", "MGD", minimal, "4.1"},
                    Case{"GEC", "GEC", minimal, "4.1"}, Case{"EEC", "EEC", minimal, "4.1"},
                    Case{"Usual34", "SSC", typical, "3.4"}, Case{"Usual35", "MGD", typical, "3.5"},
                    Case{"Usual40", "SSC", typical, "4.0"},
                    Case{"Fullest40", "EEC", maximal, "4.1"}),
    [](const auto& product) { return std::string(product.param.name); });

}  // namespace

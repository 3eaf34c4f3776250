// Lives of simulated products through the host's own interface, on its real toolkit, in which every
// call of every operation fails in turn: each ends in an error with its reason or in a result that
// is told, loses nothing but what is told, and leaves the next life of the product as it was.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "gridkit/plugin.h"
#include "handlepool/handlepool.h"
#include "support/fault_count.h"
#include "support/faulty_toolkit.h"
#include "support/host_life.h"
#include "support/scratch_folder.h"
#include "support/toolkit_operations.h"

namespace {

using Counts = std::map<std::string, int>;
constexpr int images = 2;

// In the sanitizers' build not every call is tried of the operations that are called for each line
// of a block.
#ifdef __SANITIZE_ADDRESS__
constexpr long every_call_until = 60;
#else
constexpr long every_call_until = 10000;
#endif
constexpr long stride = 11;

// Asked by the format's descriptors alone, which the host's interface does not pass on.
const std::set<std::string_view> beyond_the_host = {"gkj_MapProjectionCSRGet",
                                                    "gkj_ProjectionConvertFromMIF"};

class HostFailureSweep : public testing::TestWithParam<const char*> {
 protected:
  std::vector<HostStep> live() { return host_life(plugin, path, &faulty::calls); }

  // Blocks that an open loses: the path, of geocoded products the map projection's name, of
  // detected ones a list of names an image (itself, its array and one text).
  int lost_by_open() const {
    const std::string variant = GetParam();
    if (variant == "SSC") return 1;
    return (variant == "MGD" ? 1 : 2) + 3 * images;
  }

  // The most that may be left behind by a life in which the operation failed in that step, beside
  // the texts of the run counters.
  Counts most_left(const std::string& step, const std::string& operation) const {
    Counts most = {{"file", 1}, {"block", lost_by_open()}};
    if (operation == "gkf_Close") ++most["file"];
    // An unfinished record, or one whose release ended early: the state vectors, the directory or
    // the list of layer names, the image files.
    if (step == "open" || step == "close") {
      ++most["file"];
      most["stream"] = most["layer"] = images;
      const int layer_names = 2 + 2 * images;
      most["block"] += 6 + (step == "open" ? 1 : layer_names);
    }
    // Without the registry's word the second open builds a record of its own.
    if (step == "open again") most["block"] += lost_by_open();
    if (step.ends_with("pixels") && operation == "gkl_LayerRead") {
      most["rectangle"] = 1;
      most["block"] += 2;
    }
    if (step == "names" && operation == "gks_StringListDelete") ++most["block"];
    return most;
  }

  static void expect_at_most(Counts most) {
    most["block"] += faulty::debug_texts();
    for (const auto& [kind, count] : faulty::outstanding()) EXPECT_LE(count, most[kind]) << kind;
  }

  // What may come of the step, other than a refusal, besides what comes of it in a whole life.
  static bool is_told(const std::string& operation, const HostStep& step) {
    // Recognition fails in silence.
    if (step.name == "identify") return step.outcome == "none";
    // A name that agrees with none is the name of nothing.
    if (operation == "gks_Eqnic") return step.outcome == "nothing";
    // Without the word of the preference the lines after a refused block cannot be asked for in
    // blocks of another size: they are told to be missing.
    if (operation == "gkp_GetNumberPreference") return step.outcome.starts_with("1 gaps");
    // A read that comes short without an end of the file converts what there is.
    return operation == "gkf_fread" || operation == "gkf_feof";
  }

  void try_call(const std::string& operation, long call, const std::vector<HostStep>& failing) {
    SCOPED_TRACE(operation + ", call " + std::to_string(call));
    const HostStep& failed = *step_of_call(failing, call);
    EXPECT_TRUE(is_like(failing, whole, &failed));
    const auto same = [&](const HostStep& step) {
      return step.name == failed.name && step.outcome == failed.outcome;
    };
    const bool unharmed = std::any_of(whole.begin(), whole.end(), same);
    EXPECT_TRUE(unharmed || was_refused(failed) || is_told(operation, failed))
        << failed.name << ": " << failed.outcome;
    EXPECT_FALSE(failed.outcome.ends_with(": ")) << "without a reason: " << failed.outcome;
    faulty::disarm();
    EXPECT_TRUE(is_like(live(), whole, nullptr)) << "the life after it";
    EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
    expect_at_most(most_left(failed.name, operation));
    faulty::end_outstanding();
  }

  const ScratchFolder scratch;
  const std::string path = small_product(GetParam(), scratch.path());
  const std::shared_ptr<gridkit::Plugin> plugin = gridkit::Plugin::load(TSX_PLUGIN);
  const std::vector<HostStep> whole = live();
};

TEST_P(HostFailureSweep, ALifeWithoutFailureLosesWhatIsTold) {
  faulty::arm("", 0);
  const auto steps = live();
  for (const HostStep& step : steps) EXPECT_FALSE(was_refused(step)) << step.outcome;
  EXPECT_EQ(faulty::outstanding(),
            (Counts{{"block", lost_by_open() + faulty::debug_texts()}, {"file", 1}}));
  EXPECT_EQ(steps.back().name, "close");
  faulty::end_outstanding();
}

TEST_P(HostFailureSweep, EveryFailureIsRefusedOrToldAndHarmsNoOtherLife) {
  FaultCount tried;
  long most_calls = 0;                 // of one operation
  testing::internal::CaptureStderr();  // reports that the host has no error for
  for (const ToolkitOperation& operation : toolkit_operations) {
    const std::string name(operation.name);
    if (!operation.why_never.empty()) continue;
    for (long call = 1;; call += call < every_call_until ? 1 : stride) {
      faulty::arm(name, call);
      const auto steps = live();
      if (faulty::calls() < call) break;
      tried.add(name);
      most_calls = std::max(most_calls, call);
      try_call(name, call, steps);
    }
    faulty::end_outstanding();
  }
  testing::internal::GetCapturedStderr();
  const std::string skipped = most_calls <= every_call_until
                                  ? ", every call"
                                  : ", every call until " + std::to_string(every_call_until) +
                                        ", then every " + std::to_string(stride) + "th";
  tried.print(std::string("host, ") + GetParam() + skipped);
  EXPECT_GT(tried.total(), 150);
}

INSTANTIATE_TEST_SUITE_P(Variants, HostFailureSweep, testing::Values("SSC", "MGD", "GEC", "EEC"),
                         [](const auto& variant) { return std::string(variant.param); });

TEST(HostFailureSweep, ReachesEveryOperationThatCanFail) {
  const ScratchFolder scratch;
  const auto plugin = gridkit::Plugin::load(TSX_PLUGIN);
  std::map<std::string_view, long> calls;
  for (const char* variant : {"SSC", "EEC"}) {
    const std::string path = small_product(variant, scratch.path());
    for (const ToolkitOperation& operation : toolkit_operations) {
      if (!operation.why_never.empty() || beyond_the_host.contains(operation.name)) continue;
      faulty::arm(std::string(operation.name), 0);
      host_life(plugin, path, &faulty::calls);
      calls[operation.name] += faulty::calls();
      faulty::end_outstanding();
    }
  }
  for (const auto& [operation, count] : calls) EXPECT_GT(count, 0) << operation;
}

}  // namespace

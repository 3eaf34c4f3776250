// Lives of a product through the functions in C in which operator new of this project's libraries
// fails once. Every function tells it by its result, no life after it is harmed, nothing is lost.
// The functions that give JSON are left out: the library that makes it asks for memory where it may
// not fail.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "companion/sample_products.h"
#include "gridkit/gridkit.h"
#include "support/counted_new.h"
#include "support/fault_count.h"
#include "support/own_allocations.h"

namespace {

struct Step {
  std::string name;
  std::int32_t code = gridkit_Done;
  std::string given;    // the bytes that the function gave
  std::string message;  // of its error; empty where it has none
  long calls = 0;       // of operator new, at the step's end
  long live = 0;        // blocks that are not yet given back by then
};

template <typename T>
std::string bytes_of(const std::vector<T>& values) {
  std::string bytes(values.size() * sizeof(T), '\0');
  std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

constexpr std::int32_t lines = 64;
constexpr std::int32_t samples = 64;

// One life of a product. What it leaves allocated is added to counted_new().live.
class Life {
 public:
  Life(const std::string& annotation, const gridkit_open_options& options, long failing_call) {
    counted_new() = {&own_allocations::counts, 0, failing_call, counted_new().live};
    gridkit_product* product = nullptr;
    step("gridkit_open", [&](std::string&, gridkit_error** error) {
      return gridkit_open(annotation.c_str(), &options, &product, error);
    });
    if (product != nullptr) use(product);
    gridkit_close(product);
    counted_new().counts = nullptr;
  }

  std::vector<Step> steps;

 private:
  using Call = std::function<std::int32_t(std::string& given, gridkit_error** error)>;

  void step(const char* name, const Call& call) {
    // The test's own allocations stand outside what is counted by the place that asks for them.
    Step done;
    done.name = name;
    gridkit_error* error = nullptr;
    done.code = call(done.given, &error);
    done.message = gridkit_error_message(error);
    gridkit_error_free(error);
    done.calls = counted_new().calls;
    done.live = counted_new().live;
    steps.push_back(done);
  }

  void use(gridkit_product* product) {
    step("gridkit_files", [&](std::string& given, gridkit_error** error) {
      char** paths = nullptr;
      std::size_t count = 0;
      const std::int32_t code = gridkit_files(product, &paths, &count, error);
      for (std::size_t i = 0; paths != nullptr && i < count; ++i) given += paths[i];
      gridkit_free(paths);
      return code;
    });
    step("gridkit_get_image", [&](std::string& given, gridkit_error** error) {
      gridkit_image image{};
      image.size = sizeof image;
      const std::int32_t code = gridkit_get_image(product, 0, &image, error);
      if (code == gridkit_Done) given = image.name;
      return code;
    });
    read("gridkit_read_samples of gamma0", product, gridkit_Gamma0);
    read("gridkit_read_samples of beta0", product, gridkit_Beta0);
    step("gridkit_read_layer", [&](std::string& given, gridkit_error** error) {
      std::vector<std::uint16_t> pixels(std::size_t{lines} * samples);
      const gridkit_target target{sizeof target, pixels.data(), 0, 0};
      const std::int32_t code =
          gridkit_read_layer(product, 0, &window, &target, nullptr, nullptr, error);
      if (code == gridkit_Done) given = bytes_of(pixels);
      return code;
    });
    step("gridkit_locate", [&](std::string& given, gridkit_error** error) {
      std::vector<double> place{1, 20, 63};
      std::vector<double> longitude{5, 0, 17};
      const std::int32_t code =
          gridkit_locate(product, nullptr, place.size(), place.data(), longitude.data(), nullptr,
                         place.data(), longitude.data(), nullptr, nullptr, error);
      if (code == gridkit_Done) given = bytes_of(place) + bytes_of(longitude);
      return code;
    });
    step("gridkit_fit_rational", [&](std::string& given, gridkit_error** error) {
      gridkit_rational_model model{};
      model.size = sizeof model;
      const std::int32_t code = gridkit_fit_rational(product, nullptr, &model, error);
      if (code == gridkit_Done) given = std::to_string(model.line_offset);
      return code;
    });
    step("gridkit_quicklook", [&](std::string& given, gridkit_error** error) {
      gridkit_picture picture{};
      picture.size = sizeof picture;
      const std::int32_t code = gridkit_quicklook(product, 0, 16, &picture, error);
      // Without its place on the ground, for want of memory, a picture has other sides.
      if (code == gridkit_Done) given = "a picture";
      gridkit_free(picture.numbers);
      return code;
    });
  }

  void read(const char* name, gridkit_product* product, std::int32_t quantity) {
    step(name, [&](std::string& given, gridkit_error** error) {
      std::vector<float> values(std::size_t{lines} * samples);
      const gridkit_target target{sizeof target, values.data(), 0, 0};
      gridkit_read_options wish{};
      wish.size = sizeof wish;
      wish.form = gridkit_Power;
      wish.quantity = quantity;
      const std::int32_t code =
          gridkit_read_samples(product, 0, &window, &target, &wish, nullptr, error);
      if (code == gridkit_Done) given = bytes_of(values);
      return code;
    });
  }

  static constexpr gridkit_window window{sizeof(gridkit_window), 0, 0, lines, samples, 0, 0};
};

class AllocationsInC : public testing::TestWithParam<simulate::Variant> {
 protected:
  void SetUp() override {
    const std::string companion = folder + "/companions/tsx.so";
    kept = ::dlopen(companion.c_str(), RTLD_NOW | RTLD_LOCAL);  // so that its code stays in place
    ASSERT_NE(kept, nullptr) << companion;
    ASSERT_TRUE(own_allocations::find({"tsx.so", "libgridkit.so"}));
  }
  void TearDown() override {
    if (kept != nullptr) ::dlclose(kept);
  }

  // Of the thousands of calls some are tried, spread over all of them. The sanitizers' build is
  // slower by far.
#ifdef __SANITIZE_ADDRESS__
  static constexpr long most_points = 50;
#else
  static constexpr long most_points = 200;
#endif

  void expect_like_whole(const Step& step, const Step& expected) {
    EXPECT_EQ(step.name, expected.name);
    EXPECT_EQ(step.code, expected.code) << step.message;
    EXPECT_TRUE(step.given == expected.given) << step.name;
  }

  void try_call(long call) {
    const long before = counted_new().live;
    const Life life(annotation, options, call);
    const long lost = counted_new().live - before;
    if (life.steps.size() == 1) {
      // An open that fails inside the plug-in leaves its record behind, unfinished, as the exports
      // have it: at most what an open product holds.
      EXPECT_LE(lost, whole.front().live);
    } else {
      EXPECT_EQ(lost, 0) << "blocks are lost";
    }
    for (std::size_t i = 0; i < life.steps.size(); ++i) {
      const Step& step = life.steps[i];
      const bool has_failure = step.calls >= call && (i == 0 || life.steps[i - 1].calls < call);
      if (!has_failure || step.code == gridkit_Done) {
        // A product may do without what failed, such as a file of its cache, and give the same.
        expect_like_whole(step, whole[i]);
        continue;
      }
      SCOPED_TRACE(step.name + ": " + step.message);
      EXPECT_EQ(step.given, "");
      EXPECT_FALSE(step.message.empty());
      ++refused;
    }
    EXPECT_TRUE(life.steps.size() == whole.size() || life.steps.size() == 1);
  }

  const SampleProducts products;
  const std::string folder = std::filesystem::path(TSX_PLUGIN).parent_path().string();
  const char* folders = folder.c_str();
  const gridkit_open_options options{sizeof(gridkit_open_options), &folders, 1, 0, 0};
  const std::string annotation = products.simulated(GetParam(), lines, samples);
  void* kept = nullptr;
  std::vector<Step> whole;
  long refused = 0;
};

TEST_P(AllocationsInC, AreToldWhereTheyFailAndHarmNothing) {
  const Life first(annotation, options, 0);  // what is made once for the process
  whole = Life(annotation, options, 0).steps;
  ASSERT_GT(whole.size(), 1U);
  for (const Step& step : whole) EXPECT_EQ(step.code, gridkit_Done) << step.name << step.message;
  const long total = whole.back().calls;
  const long stride = 1 + (total - 1) / most_points;
  testing::internal::CaptureStderr();  // reports that the host has no error for
  FaultCount tried;
  for (long call = 1; call <= total; call += stride) {
    SCOPED_TRACE("allocation " + std::to_string(call));
    try_call(call);
    tried.add("operator new");
  }
  testing::internal::GetCapturedStderr();
  tried.print("functions in C, " + std::to_string(total) + " allocations, every " +
              std::to_string(stride) + ". fails");
  EXPECT_GT(refused, tried.total() / 2);
  for (const Step& step : Life(annotation, options, 0).steps) {
    EXPECT_EQ(step.code, gridkit_Done) << step.name << step.message;
  }
}

INSTANTIATE_TEST_SUITE_P(Variants, AllocationsInC,
                         testing::Values(simulate::Variant::ssc, simulate::Variant::mgd),
                         [](const auto& variant) {
                           return variant.param == simulate::Variant::ssc ? "SSC" : "MGD";
                         });

}  // namespace

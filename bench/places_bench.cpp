// A million places in one call of the host in C, beside a call each as the command line makes it:
// the product opened, one pixel placed, the product closed.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "gridkit/gridkit.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

constexpr std::int32_t size = 4096;
constexpr std::size_t places = 1000000;
constexpr int opened_places = 20;
constexpr int repetitions = 3;

void must(std::int32_t code) {
  if (code != gridkit_Done) throw std::runtime_error("a call failed: " + std::to_string(code));
}

class Product {
 public:
  explicit Product(const std::string& path) {
    const std::string folder = std::filesystem::path(TSX_PLUGIN).parent_path().string();
    const char* folders = folder.c_str();
    gridkit_open_options options{};
    options.size = sizeof options;
    options.plugin_folders = &folders;
    options.plugin_folder_count = 1;
    must(gridkit_open(path.c_str(), &options, &handle_, nullptr));
  }
  Product(const Product&) = delete;
  Product& operator=(const Product&) = delete;
  ~Product() { gridkit_close(handle_); }

  void locate(std::int32_t threads, std::size_t count, const double* line, const double* sample,
              double* latitude, double* longitude) const {
    gridkit_place_options options{};
    options.size = sizeof options;
    options.threads = threads;
    must(gridkit_locate(handle_, &options, count, line, sample, nullptr, latitude, longitude,
                        nullptr, nullptr, nullptr));
  }

 private:
  gridkit_product* handle_ = nullptr;
};

struct Arrays {
  std::vector<double> line = std::vector<double>(places);
  std::vector<double> sample = std::vector<double>(places);
  std::vector<double> latitude = std::vector<double>(places);
  std::vector<double> longitude = std::vector<double>(places);
};

// The shortest of some repetitions.
template <class Work>
double seconds_of(Work work) {
  double shortest = HUGE_VAL;
  for (int i = 0; i < repetitions; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    shortest = std::min(shortest, took.count());
  }
  return shortest;
}

std::vector<bench::Figure> measured(const std::string& path) {
  Arrays all;
  for (std::size_t i = 0; i < places; ++i) {
    all.line[i] = static_cast<double>(i % size);
    all.sample[i] = static_cast<double>((i / 7) % size);
  }
  const auto in_one_call = [&](std::int32_t threads) {
    return seconds_of([&] {
      Product(path).locate(threads, places, all.line.data(), all.sample.data(), all.latitude.data(),
                           all.longitude.data());
    });
  };
  const double one_thread = in_one_call(1) / places;
  const double all_threads = in_one_call(-1) / places;
  double worst = 0;
  const double a_call_each =
      seconds_of([&] {
        for (std::size_t i = 0; i < opened_places; ++i) {
          const std::size_t k = i * places / opened_places;
          double latitude = 0;
          double longitude = 0;
          Product(path).locate(1, 1, &all.line[k], &all.sample[k], &latitude, &longitude);
          worst = std::max({worst, std::abs(latitude - all.latitude[k]),
                            std::abs(longitude - all.longitude[k])});
        }
      }) /
      opened_places;
  if (worst != 0) throw std::runtime_error("a call each gives other places");
  return {{"a place in one call of 1,000,000, of a call each, on one thread", "thousandths",
           1000 * one_thread / a_call_each, 20},
          {"the same on every processor", "thousandths", 1000 * all_threads / a_call_each, 20},
          {"1,000,000 places in one call, the product opened", "s on one thread",
           one_thread * places, 0}};
}

}  // namespace

int main(int argc, char** argv) try {
  const ScratchFolder scratch;
  simulate::Options options;
  options.lines = options.samples = size;
  options.empty_images = true;
  options.targets = 1;
  const std::string product =
      simulate::write_product_folder(options, (scratch / "product").string());
  return bench::run(argc, argv, {}, [&] { return measured(product); });
} catch (const std::exception& error) {
  std::fprintf(stderr, "places_bench: %s\n", error.what());
  return 1;
}

// What the functions in C give, against the library's C++ and against each other.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "companion/sample_products.h"
#include "gridkit/gridkit.h"
#include "gridkit/info_json.h"
#include "gridkit/product.h"
#include "gridkit/record_json.h"
#include "rmdllib/placement.h"

namespace {

class HostInC : public testing::Test {
 protected:
  gridkit_product* open(const std::string& path) const {
    gridkit_product* product = nullptr;
    gridkit_error* error = nullptr;
    EXPECT_EQ(gridkit_open(path.c_str(), &options, &product, &error), gridkit_Done)
        << gridkit_error_message(error);
    return product;
  }

  static gridkit_window window(std::int64_t line, std::int64_t sample, std::int64_t lines,
                               std::int64_t samples, std::int64_t line_step = 0,
                               std::int64_t sample_step = 0) {
    return {sizeof(gridkit_window), line, sample, lines, samples, line_step, sample_step};
  }

  static gridkit_read_options options_of(std::int32_t threads) {
    gridkit_read_options wish{};
    wish.size = sizeof wish;
    wish.threads = threads;
    return wish;
  }

  SampleProducts products;
  std::string folder = std::filesystem::path(TSX_PLUGIN).parent_path().string();
  const char* folders = folder.c_str();
  gridkit_open_options options{sizeof(gridkit_open_options), &folders, 1, 0, 0};
};

TEST_F(HostInC, OpensByFolderAndTellsPathFilesAndDescription) {
  const std::string annotation = products.simulated(simulate::Variant::ssc, 70, 90, {"HH", "VV"});
  gridkit_product* product =
      open(std::filesystem::path(annotation).parent_path().parent_path().string());
  char* text = nullptr;
  ASSERT_EQ(gridkit_annotation_path(product, &text, nullptr), gridkit_Done);
  EXPECT_EQ(text, annotation);
  gridkit_free(text);
  char** files = nullptr;
  std::size_t count = 0;
  ASSERT_EQ(gridkit_files(product, &files, &count, nullptr), gridkit_Done);
  ASSERT_EQ(count, 3U);
  EXPECT_EQ(files[0], annotation);
  for (std::size_t i = 1; i < count; ++i) EXPECT_TRUE(std::filesystem::exists(files[i]));
  gridkit_free(static_cast<void*>(files));
  const gridkit::Product same = products.plugin->open(annotation);
  ASSERT_EQ(gridkit_describe(product, &text, nullptr), gridkit_Done);
  EXPECT_EQ(text, gridkit::info_as_json(same, {}));
  EXPECT_NE(std::string(text).find("\"mission\": \"TSX-1\""), std::string::npos);
  gridkit_free(text);
  ASSERT_EQ(gridkit_data(product, ":TSX_Beta0", &text, nullptr), gridkit_Done);
  EXPECT_EQ(text, gridkit::record_as_json(":TSX_Beta0", *same.read_data(":TSX_Beta0")));
  gridkit_free(text);
  EXPECT_EQ(gridkit_data(product, ":tsx_beta0xyz", &text, nullptr), gridkit_NotThere);
  EXPECT_EQ(gridkit_close(product), gridkit_Done);
}

TEST_F(HostInC, TellsWhereAnAnnotationIsAtFault) {
  const std::string annotation = products.simulated(simulate::Variant::ssc, 70, 90);
  std::ifstream in(annotation);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  const auto at = text.find("<absOrbit>");
  ASSERT_NE(at, std::string::npos);
  text.insert(at + 10, "x");
  std::ofstream(annotation) << text;
  gridkit_product* product = nullptr;
  gridkit_error* error = nullptr;
  EXPECT_EQ(gridkit_open(annotation.c_str(), &options, &product, &error), gridkit_BadDescription);
  EXPECT_EQ(product, nullptr);
  EXPECT_EQ(gridkit_error_path(error), annotation);
  EXPECT_STREQ(gridkit_error_element(error), "/level1Product/productInfo/missionInfo/absOrbit");
  EXPECT_EQ(gridkit_error_line(error),
            1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
  gridkit_error_free(error);
  EXPECT_EQ(gridkit_open("/no/such/file", &options, &product, nullptr), gridkit_NotFound);
  EXPECT_EQ(gridkit_open(TSX_PLUGIN, &options, &product, nullptr), gridkit_NotRecognised);
}

TEST_F(HostInC, ReadsSamplesAsTheLibraryDoesOnAnyNumberOfThreads) {
  const std::string annotation = products.with_bursts({BurstLayout{1500, 400}});
  gridkit_product* product = open(annotation);
  const gridkit::Samples samples = products.open(annotation);
  const gridkit_window part = window(3, 2, 700, 190, 2, 2);
  std::vector<float> expected(700 * 190 * 2);
  samples.read(0, {3, 2, 700, 190, 2, 2}, {gridkit::SampleForm::complex_float}, {expected.data()});
  for (const std::int32_t threads : {0, 1, 3, -1}) {
    std::vector<float> found(expected.size());
    gridkit_read_options wish = options_of(threads);
    wish.form = gridkit_ComplexFloat;
    gridkit_delivered came{sizeof came, 0, 0};
    const gridkit_target place{sizeof place, found.data(), 0, 0};
    ASSERT_EQ(gridkit_read_samples(product, 0, &part, &place, &wish, &came, nullptr), gridkit_Done);
    EXPECT_EQ(found, expected) << threads;
    EXPECT_EQ(came.lines, 700);
    // Upside down and mirrored, with gaps between the lines.
    std::vector<float> turned(700 * 200 * 2);
    const gridkit_target backwards{sizeof backwards, turned.data() + 699 * 400 + 2 * 189, -1600,
                                   -8};
    ASSERT_EQ(gridkit_read_samples(product, 0, &part, &backwards, &wish, nullptr, nullptr),
              gridkit_Done);
    for (std::size_t l = 0; l < 700; ++l) {
      for (std::size_t s = 0; s < 190; ++s) {
        ASSERT_EQ(turned[(699 - l) * 400 + (189 - s) * 2], expected[(l * 190 + s) * 2]);
      }
    }
  }
  EXPECT_EQ(gridkit_close(product), gridkit_Done);
}

TEST_F(HostInC, EndsAReadWhenItsCallerSaysSo) {
  gridkit_product* product = open(products.with_bursts({BurstLayout{3000, 1000}}));
  std::vector<std::uint32_t> pixels(3000 * 1000, 1);
  const gridkit_window all = window(0, 0, 3000, 1000);
  const gridkit_target place{sizeof place, pixels.data(), 0, 0};
  std::vector<std::int64_t> told;
  gridkit_read_options wish = options_of(1);
  wish.progress = [](void* context, std::int64_t done, std::int64_t lines) -> std::int32_t {
    EXPECT_EQ(lines, 3000);
    static_cast<std::vector<std::int64_t>*>(context)->push_back(done);
    return done > 1000 ? 1 : 0;
  };
  wish.context = &told;
  gridkit_delivered came{sizeof came, 0, 0};
  EXPECT_EQ(gridkit_read_samples(product, 0, &all, &place, &wish, &came, nullptr),
            gridkit_Cancelled);
  ASSERT_GT(told.size(), 1U);
  EXPECT_EQ(came.lines, told.back());
  EXPECT_LT(came.lines, 3000);
  EXPECT_EQ(pixels[static_cast<std::size_t>(came.lines) * 1000], 1U) << "the rest stays";
  EXPECT_EQ(gridkit_close(product), gridkit_Done);
}

TEST_F(HostInC, TellsTheLineAtWhichAFileEnds) {
  const std::string annotation = products.with_bursts({BurstLayout{3000, 1000}});
  const auto image = SampleProducts::image_of(annotation);
  gridkit_product* product = open(annotation);
  std::filesystem::resize_file(image, std::filesystem::file_size(image) - 2000 * 4008 - 4000);
  std::vector<std::uint32_t> pixels(3000 * 1000);
  const gridkit_window all = window(0, 0, 3000, 1000);
  const gridkit_target place{sizeof place, pixels.data(), 0, 0};
  const gridkit_read_options wish = options_of(2);
  gridkit_delivered came{sizeof came, 0, 0};
  gridkit_error* error = nullptr;
  EXPECT_EQ(gridkit_read_samples(product, 0, &all, &place, &wish, &came, &error), gridkit_CutShort);
  EXPECT_EQ(came.lines, 999);
  EXPECT_EQ(gridkit_error_image_line(error), 999);
  EXPECT_EQ(gridkit_error_path(error), image.string());
  gridkit_error_free(error);
  EXPECT_EQ(gridkit_close(product), gridkit_Done);
}

TEST_F(HostInC, ReadsLayersAsTheExportsHaveThem) {
  for (const auto variant : {simulate::Variant::ssc, simulate::Variant::eec}) {
    const std::string annotation = products.simulated(variant, 128, 192);
    gridkit_product* product = open(annotation);
    const gridkit::Product same = products.plugin->open(annotation);
    std::int32_t count = 0;
    ASSERT_EQ(gridkit_layer_count(product, &count, nullptr), gridkit_Done);
    ASSERT_EQ(static_cast<std::size_t>(count), same.layer_names().size());
    for (std::int32_t i = 0; i < count; ++i) {
      gridkit_layer facts{};
      facts.size = sizeof facts;
      ASSERT_EQ(gridkit_get_layer(product, i, &facts, nullptr), gridkit_Done);
      const gridkit::Layer layer = same.open_layer(facts.name);
      ASSERT_EQ(facts.height, layer.height());
      std::vector<std::uint16_t> block;
      ASSERT_TRUE(layer.read_block(0, 1, block));
      const auto side = static_cast<std::int64_t>(layer.block_width());
      const gridkit_window part = window(1, side + 1, 30, 20, 2, 3);
      std::vector<std::uint16_t> found(30 * 20);
      const gridkit_target place{sizeof place, found.data(), 0, 0};
      ASSERT_EQ(gridkit_read_layer(product, i, &part, &place, nullptr, nullptr, nullptr),
                gridkit_Done);
      for (std::int64_t l = 0; l < 30; ++l) {
        for (std::int64_t s = 0; s < 20; ++s) {
          ASSERT_EQ(found[static_cast<std::size_t>(l * 20 + s)],
                    block[static_cast<std::size_t>((1 + 2 * l) * side + 1 + 3 * s)]);
        }
      }
    }
    EXPECT_EQ(gridkit_close(product), gridkit_Done);
  }
}

TEST_F(HostInC, PlacesAsTheLibraryDoesWithDelaysAndWithout) {
  simulate::Options scene;
  scene.lines = 300;
  scene.samples = 200;
  scene.targets = 1;
  scene.delays = {1.4e-8, 2e-9, -1.8e-4};
  const std::string annotation =
      simulate::write_product_folder(scene, (products.scratch / "grid").string());
  gridkit_product* product = open(annotation);
  const gridkit::Product same = products.plugin->open(annotation);
  rmdllib::Placement placement(same);
  gridkit_geometry geometry{};
  geometry.size = sizeof geometry;
  ASSERT_EQ(gridkit_get_geometry(product, &geometry, nullptr), gridkit_Done);
  EXPECT_EQ(geometry.kind, gridkit_RadarGeometry);
  EXPECT_EQ(geometry.has_delays, 1);
  std::vector<double> states(static_cast<std::size_t>(geometry.state_vector_count) * 7);
  const auto n = static_cast<std::size_t>(geometry.state_vector_count);
  ASSERT_EQ(gridkit_state_vectors(product, n, &states[0], &states[n], &states[4 * n], nullptr),
            gridkit_Done);
  const auto motion = placement.radar()->orbit().at(states[1]);
  EXPECT_NEAR(states[n + 3], motion.position.x, 1e-6);
  EXPECT_NEAR(states[4 * n + 5], motion.velocity.z, 1e-9);
  constexpr std::size_t count = 20000;
  std::vector<double> line(count);
  std::vector<double> sample(count);
  for (std::size_t i = 0; i < count; ++i) {
    line[i] = static_cast<double>(i % 300);
    sample[i] = static_cast<double>(i % 199);
  }
  std::vector<double> terrain(count);
  line[7] = std::nan("");
  ASSERT_EQ(
      gridkit_terrain_heights(product, count, line.data(), sample.data(), terrain.data(), nullptr),
      gridkit_Done);
  EXPECT_TRUE(std::isnan(terrain[7]));
  const auto grid = same.samples().geolocation_grid().grid;
  for (std::size_t i = 0; i < count; i += 501) {
    EXPECT_EQ(terrain[i], grid->height_at(line[i], sample[i]));
  }
  line[7] = 1e12;
  gridkit_place_options wish{};
  wish.size = sizeof wish;
  for (const std::int32_t delays : {gridkit_No, gridkit_Default}) {
    if (delays == gridkit_Default) {
      placement.apply(rmdllib::corrections_of(*same.samples().geolocation_grid().grid));
    }
    wish.delays = delays;
    wish.threads = 2;
    std::vector<double> latitude(count);
    std::vector<double> longitude(count);
    std::vector<double> height(count);
    std::size_t without = 0;
    ASSERT_EQ(gridkit_locate(product, &wish, count, line.data(), sample.data(), nullptr,
                             latitude.data(), longitude.data(), height.data(), &without, nullptr),
              gridkit_Done);
    EXPECT_EQ(without, 1U);
    EXPECT_TRUE(std::isnan(latitude[7]));
    for (std::size_t i = 0; i < count; i += 501) {
      const auto ground = placement.ground_of({line[i], sample[i]}, height[i]);
      EXPECT_EQ(height[i], placement.radar()->average_height());
      EXPECT_EQ(latitude[i], ground.latitude_degrees);
      EXPECT_EQ(longitude[i], ground.longitude_degrees);
    }
    // Back into the arrays they came from.
    ASSERT_EQ(gridkit_find(product, &wish, count, latitude.data(), longitude.data(), height.data(),
                           latitude.data(), longitude.data(), &without, nullptr),
              gridkit_Done);
    for (std::size_t i = 8; i < count; ++i) {
      ASSERT_NEAR(latitude[i], line[i], 1e-5);
      ASSERT_NEAR(longitude[i], sample[i], 1e-5);
    }
  }
  EXPECT_EQ(gridkit_close(product), gridkit_Done);
}

TEST_F(HostInC, ThreadsShareAProductThatOneOfThemCloses) {
  const std::string annotation = products.simulated(simulate::Variant::gec, 256, 256);
  for (int round = 0; round < 5; ++round) {
    gridkit_product* product = open(annotation);
    std::atomic<int> odd = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&, t] {
        std::vector<std::uint16_t> pixels(64 * 64);
        const gridkit_window part = window(16 * t, 32 * t, 64, 64);
        const gridkit_target place{sizeof place, pixels.data(), 0, 0};
        for (int k = 0; k < 20; ++k) {
          const auto code =
              gridkit_read_layer(product, 0, &part, &place, nullptr, nullptr, nullptr);
          if (code != gridkit_Done && code != gridkit_WrongUse) ++odd;
          if (t == 0 && k == 10) gridkit_close(product);
          // Another handle of the same product comes and goes.
          gridkit_product* other = nullptr;
          if (t == 1 && gridkit_open(annotation.c_str(), &options, &other, nullptr) != 0) ++odd;
          gridkit_close(other);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(odd, 0);
  }
}

}  // namespace

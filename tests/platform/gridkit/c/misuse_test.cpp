// What the functions in C answer to arguments that mean nothing: an error, and nothing else done.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "companion/sample_products.h"
#include "gridkit/gridkit.h"

namespace {

class Misuse : public testing::Test {
 protected:
  Misuse() {
    const std::string annotation = products.simulated(simulate::Variant::ssc, 70, 90);
    EXPECT_EQ(gridkit_open(annotation.c_str(), &options, &product, nullptr), gridkit_Done);
  }
  ~Misuse() override { gridkit_close(product); }

  // The call is wrong use, tells so in words, and takes an address of no error as well.
  template <class Call>
  void expect_wrong_use(Call call, const std::string& word) {
    SCOPED_TRACE(word);
    gridkit_error* error = nullptr;
    EXPECT_EQ(call(&error), gridkit_WrongUse);
    EXPECT_EQ(gridkit_error_code(error), gridkit_WrongUse);
    EXPECT_NE(std::string(gridkit_error_message(error)).find(word), std::string::npos)
        << gridkit_error_message(error);
    gridkit_error_free(error);
    EXPECT_EQ(call(nullptr), gridkit_WrongUse);
  }

  template <class Struct>
  static Struct sized() {
    Struct made{};
    made.size = sizeof made;
    return made;
  }

  gridkit_window window(std::int64_t line, std::int64_t sample, std::int64_t lines,
                        std::int64_t samples, std::int64_t line_step = 0,
                        std::int64_t sample_step = 0) const {
    return {sizeof(gridkit_window), line, sample, lines, samples, line_step, sample_step};
  }

  SampleProducts products;
  std::string folder = std::filesystem::path(TSX_PLUGIN).parent_path().string();
  const char* folders = folder.c_str();
  gridkit_open_options options{sizeof(gridkit_open_options), &folders, 1, 0, 0};
  gridkit_product* product = nullptr;
  std::vector<std::int32_t> pixels = std::vector<std::int32_t>(70 * 90, -7);
  gridkit_target target{sizeof(gridkit_target), pixels.data(), 0, 0};
};

TEST_F(Misuse, OfOpenIsTold) {
  gridkit_product* opened = product;
  expect_wrong_use(
      [&](gridkit_error** error) { return gridkit_open(nullptr, &options, &opened, error); },
      "path");
  EXPECT_EQ(opened, nullptr);
  expect_wrong_use(
      [&](gridkit_error** error) { return gridkit_open("x", &options, nullptr, error); },
      "product");
  gridkit_open_options wrong = options;
  for (const std::size_t size : {std::size_t{0}, std::size_t{4}, std::size_t{1} << 40}) {
    wrong.size = size;
    expect_wrong_use(
        [&](gridkit_error** error) { return gridkit_open("x", &wrong, &opened, error); }, "size");
  }
  wrong = options;
  wrong.plugin_folders = nullptr;
  expect_wrong_use([&](gridkit_error** error) { return gridkit_open("x", &wrong, &opened, error); },
                   "plugin_folders");
  wrong = options;
  wrong.sister_satellites = 3;
  expect_wrong_use([&](gridkit_error** error) { return gridkit_open("x", &wrong, &opened, error); },
                   "sister_satellites");
}

TEST_F(Misuse, OfAHandleThatWasClosedIsTold) {
  gridkit_product* closed = product;
  ASSERT_EQ(gridkit_close(product), gridkit_Done);
  product = nullptr;
  EXPECT_EQ(gridkit_close(closed), gridkit_WrongUse);
  EXPECT_EQ(gridkit_close(nullptr), gridkit_Done);
  for (const gridkit_product* handle : {static_cast<const gridkit_product*>(nullptr),
                                        static_cast<const gridkit_product*>(closed)}) {
    std::int32_t count = 5;
    char* text = nullptr;
    char** texts = nullptr;
    std::size_t size = 0;
    double number = 0;
    auto image = sized<gridkit_image>();
    auto layer = sized<gridkit_layer>();
    auto geometry = sized<gridkit_geometry>();
    auto model = sized<gridkit_rational_model>();
    auto map = sized<gridkit_map>();
    const gridkit_window all = window(0, 0, 70, 90);
    const auto refused = [&](auto call) { expect_wrong_use(call, "product"); };
    refused([&](gridkit_error** e) { return gridkit_annotation_path(handle, &text, e); });
    refused([&](gridkit_error** e) { return gridkit_files(handle, &texts, &size, e); });
    refused([&](gridkit_error** e) { return gridkit_describe(handle, &text, e); });
    refused([&](gridkit_error** e) { return gridkit_data(handle, "x", &text, e); });
    refused([&](gridkit_error** e) { return gridkit_image_count(handle, &count, e); });
    refused([&](gridkit_error** e) { return gridkit_get_image(handle, 0, &image, e); });
    refused([&](gridkit_error** e) {
      return gridkit_read_samples(handle, 0, &all, &target, nullptr, nullptr, e);
    });
    refused([&](gridkit_error** e) { return gridkit_layer_count(handle, &count, e); });
    refused([&](gridkit_error** e) { return gridkit_get_layer(handle, 0, &layer, e); });
    refused([&](gridkit_error** e) {
      return gridkit_read_layer(handle, 0, &all, &target, nullptr, nullptr, e);
    });
    refused([&](gridkit_error** e) { return gridkit_get_geometry(handle, &geometry, e); });
    refused([&](gridkit_error** e) { return gridkit_get_map(handle, &map, &text, e); });
    auto picture = sized<gridkit_picture>();
    refused([&](gridkit_error** e) { return gridkit_quicklook(handle, 0, 100, &picture, e); });
    refused([&](gridkit_error** e) {
      return gridkit_state_vectors(handle, 1, &number, nullptr, nullptr, e);
    });
    refused([&](gridkit_error** e) {
      return gridkit_locate(handle, nullptr, 1, &number, &number, nullptr, &number, &number,
                            nullptr, nullptr, e);
    });
    refused([&](gridkit_error** e) {
      return gridkit_find(handle, nullptr, 1, &number, &number, nullptr, &number, &number, nullptr,
                          e);
    });
    refused([&](gridkit_error** e) {
      return gridkit_radar_coordinates(handle, 1, &number, &number, &number, &number, nullptr, e);
    });
    refused([&](gridkit_error** e) {
      return gridkit_terrain_heights(handle, 1, &number, &number, &number, e);
    });
    refused([&](gridkit_error** e) { return gridkit_fit_rational(handle, nullptr, &model, e); });
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(count, 0);
  }
}

TEST_F(Misuse, OfReadsIsToldAndWritesNothing) {
  const gridkit_window all = window(0, 0, 70, 90);
  const auto read = [&](const gridkit_window* part, const gridkit_target* place,
                        const gridkit_read_options* wish, std::int32_t number = 0) {
    return [=, this](gridkit_error** error) {
      const std::int32_t layer =
          gridkit_read_layer(product, number, part, place, wish, nullptr, nullptr);
      EXPECT_TRUE(layer == gridkit_WrongUse || (wish != nullptr && wish->threads == 0));
      return gridkit_read_samples(product, number, part, place, wish, nullptr, error);
    };
  };
  expect_wrong_use(read(nullptr, &target, nullptr), "window");
  expect_wrong_use(read(&all, nullptr, nullptr), "target");
  gridkit_target nowhere{sizeof(gridkit_target), nullptr, 0, 0};
  expect_wrong_use(read(&all, &nowhere, nullptr), "data");
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  for (const gridkit_window& part :
       {window(0, 0, 71, 90), window(0, 0, 70, 91), window(-1, 0, 1, 1), window(0, -1, 1, 1),
        window(70, 0, 1, 1), window(0, 90, 1, 1), window(0, 0, 0, 1), window(0, 0, 1, 0),
        window(0, 0, -1, 1), window(0, 0, 2, 1, 70), window(0, 0, 1, 2, 1, 90),
        window(0, 0, 1, 1, -1), window(0, 0, largest, largest), window(largest, largest, 1, 1),
        window(0, 0, 2, 2, largest, largest)}) {
    expect_wrong_use(read(&part, &target, nullptr), "does not lie in");
  }
  expect_wrong_use(read(&all, &target, nullptr, -1), "image");
  expect_wrong_use(read(&all, &target, nullptr, 2), "image");
  auto wish = sized<gridkit_read_options>();
  wish.threads = -2;
  expect_wrong_use(read(&all, &target, &wish), "threads");
  wish = sized<gridkit_read_options>();
  wish.form = 8;
  expect_wrong_use(read(&all, &target, &wish), "form");
  wish = sized<gridkit_read_options>();
  wish.form = gridkit_Power;
  wish.quantity = 99;
  expect_wrong_use(read(&all, &target, &wish), "quantity");
  wish.quantity = gridkit_Intensity;
  wish.subtract_noise = gridkit_Yes;
  expect_wrong_use(read(&all, &target, &wish), "noise");
  wish.form = gridkit_Magnitude;
  wish.quantity = gridkit_Beta0;
  expect_wrong_use(read(&all, &target, &wish), "powers");
  // Reads of layers that options of samples do not concern have written; those of samples have not.
  pixels.assign(pixels.size(), -7);
  wish.threads = -2;
  gridkit_read_samples(product, 0, &all, &target, &wish, nullptr, nullptr);
  EXPECT_EQ(pixels, std::vector<std::int32_t>(70 * 90, -7));
}

TEST_F(Misuse, OfOutputsIsTold) {
  expect_wrong_use([&](gridkit_error** e) { return gridkit_describe(product, nullptr, e); },
                   "json");
  expect_wrong_use([&](gridkit_error** e) { return gridkit_image_count(product, nullptr, e); },
                   "count");
  expect_wrong_use([&](gridkit_error** e) { return gridkit_get_image(product, 0, nullptr, e); },
                   "image");
  gridkit_image image{};
  expect_wrong_use([&](gridkit_error** e) { return gridkit_get_image(product, 0, &image, e); },
                   "size");
  image.size = sizeof image;
  expect_wrong_use([&](gridkit_error** e) { return gridkit_get_image(product, 7, &image, e); },
                   "no image");
  gridkit_layer layer{};
  expect_wrong_use([&](gridkit_error** e) { return gridkit_get_layer(product, 0, &layer, e); },
                   "size");
  const double number = 1;
  expect_wrong_use(
      [&](gridkit_error** e) {
        return gridkit_locate(product, nullptr, 1, &number, &number, nullptr, nullptr, nullptr,
                              nullptr, nullptr, e);
      },
      "array");
  double time = 0;
  expect_wrong_use(
      [&](gridkit_error** e) {
        return gridkit_state_vectors(product, 1, &time, nullptr, nullptr, e);
      },
      "state vectors");
  auto model = sized<gridkit_rational_model>();
  auto heights = sized<gridkit_rational_options>();
  heights.lowest_height = 10;
  heights.highest_height = -10;
  expect_wrong_use(
      [&](gridkit_error** e) { return gridkit_fit_rational(product, &heights, &model, e); },
      "no range");
}

TEST_F(Misuse, StructsOfOtherVersionsAreUnderstood) {
  // One of an earlier version gets as much as it has room for.
  struct {
    gridkit_image image;
  } older{};
  older.image.size = offsetof(gridkit_image, samples);
  older.image.samples = -5;
  EXPECT_EQ(gridkit_get_image(product, 0, &older.image, nullptr), gridkit_Done);
  EXPECT_EQ(older.image.lines, 70);
  EXPECT_EQ(older.image.samples, -5);
  EXPECT_EQ(older.image.size, offsetof(gridkit_image, samples));
  // One of a later version is taken as long as what is not known is 0.
  struct Later {
    gridkit_read_options known{};
    std::int64_t unknown = 0;
  } later;
  later.known.size = sizeof later;
  const gridkit_window all = window(0, 0, 70, 90);
  EXPECT_EQ(gridkit_read_samples(product, 0, &all, &target, &later.known, nullptr, nullptr),
            gridkit_Done);
  later.unknown = 1;
  expect_wrong_use(
      [&](gridkit_error** e) {
        return gridkit_read_samples(product, 0, &all, &target, &later.known, nullptr, e);
      },
      "later version");
}

TEST(NoError, HasEmptyParts) {
  EXPECT_EQ(gridkit_error_code(nullptr), gridkit_Done);
  EXPECT_STREQ(gridkit_error_message(nullptr), "");
  EXPECT_STREQ(gridkit_error_path(nullptr), "");
  EXPECT_STREQ(gridkit_error_element(nullptr), "");
  EXPECT_EQ(gridkit_error_line(nullptr), 0);
  EXPECT_EQ(gridkit_error_image_line(nullptr), -1);
  gridkit_error_free(nullptr);
  gridkit_free(nullptr);
}

}  // namespace

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "gridkit/file.h"
#include "gridkit/image_reader.h"
#include "gridkit/plugin.h"
#include "gridkit/preference.h"
#include "gridkit/product.h"
#include "tests/support/scratch_folder.h"

namespace {

using gridkit::Error;
using gridkit::Plugin;
using gridkit::Product;

const std::string library = std::string(TEST_PLUGINS) + "/fake.so";

class Host : public testing::Test {
 protected:
  std::shared_ptr<Plugin> plugin = Plugin::load(library);

  // How many records the plug-in has ended.
  static int closes() {
    void* handle = ::dlopen(library.c_str(), RTLD_NOW);
    const int count = reinterpret_cast<int32_t (*)()>(::dlsym(handle, "fakeCloses"))();
    ::dlclose(handle);
    return count;
  }
  std::string refusal(const std::string& path) {
    try {
      plugin->open(path);
    } catch (const Error& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(Host, TakesThePrefixFromTheFileName) {
  EXPECT_EQ(plugin->format().description, "made for tests");
  EXPECT_EQ(plugin->format().titles, std::vector<std::string>{"Fake"});
  EXPECT_EQ(plugin->format().templates, std::vector<std::string>{"*.fake"});
  EXPECT_EQ(plugin->format().extensions, std::vector<std::string>{".fake"});
}

TEST_F(Host, NamesTheFunctionThatAPluginLacks) {
  const gridkit::PluginFolder folder = gridkit::load_plugins(TEST_PLUGINS);
  EXPECT_EQ(folder.plugins.size(), 1U);
  ASSERT_EQ(folder.refused.size(), 1U);
  EXPECT_NE(folder.refused[0].find("broken.so: not a format plug-in: it has no function "
                                   "brokenInstanceTitleListGet"),
            std::string::npos)
      << folder.refused[0];
}

TEST_F(Host, TellsAMissingFolder) {
  const gridkit::PluginFolder folder = gridkit::load_plugins("/nonexistent");
  EXPECT_TRUE(folder.plugins.empty());
  EXPECT_EQ(folder.refused.size(), 1U);
}

TEST_F(Host, TheEnvironmentCanNameThePluginFolder) {
  ::setenv("GRIDKIT_PLUGINS", TEST_PLUGINS, 1);
  EXPECT_EQ(gridkit::default_plugin_folder(), TEST_PLUGINS);
  ::setenv("GRIDKIT_PLUGINS", "", 1);
  const std::filesystem::path beside = gridkit::default_plugin_folder();
  ::unsetenv("GRIDKIT_PLUGINS");
  EXPECT_EQ(gridkit::default_plugin_folder(), beside);
  EXPECT_EQ(beside.filename(), "gridkit");
  EXPECT_TRUE(std::filesystem::exists(beside.parent_path() / "libgridkit.so")) << beside;
}

TEST_F(Host, IdentifiesByAskingThePlugin) {
  EXPECT_EQ(plugin->identify("a.fake"), 0);
  EXPECT_EQ(plugin->identify("a.real"), std::nullopt);
}

TEST_F(Host, CountsHoldersAndClosesOnce) {
  const int before = closes();
  {
    const Product first = plugin->open("h40.fake");
    {
      const Product second = plugin->open("h40.fake");
      const Product copy = second;
      EXPECT_EQ(copy.path(), "h40.fake");
    }
    EXPECT_EQ(closes(), before) << "the first still holds it";
    EXPECT_EQ(first.layer_names(), std::vector<std::string>{"ONE"});
  }
  EXPECT_EQ(closes(), before + 1);
}

TEST_F(Host, ALayerKeepsItsProductOpen) {
  const int before = closes();
  {
    const gridkit::Layer layer = plugin->open("h40.fake").open_layer("ONE");
    EXPECT_EQ(closes(), before);
    EXPECT_EQ(layer.height(), 40);
    EXPECT_EQ(layer.pixel_type(), "u16");
    EXPECT_EQ(layer.layer_type(), "plain");
  }
  EXPECT_EQ(closes(), before + 1);
}

TEST_F(Host, NeverUsesAnUnfinishedRecord) {
  const int before = closes();
  EXPECT_EQ(refusal("late h40.fake"), "late h40.fake: cannot be opened: fake: broken late");
  EXPECT_EQ(closes(), before);
}

TEST_F(Host, TellsWhyAnOpenFailed) {
  EXPECT_EQ(refusal("early h40.fake"), "early h40.fake: cannot be opened: fake: no record at all");
  EXPECT_EQ(refusal("a.real"), "a.real: not a file of the format Fake");
  EXPECT_EQ(refusal("throw h40.fake"), "throw h40.fake: the plug-in gave up: std::bad_alloc");
}

// A product that opens a file beside its folder.
class OutsideFile : public Host {
 protected:
  OutsideFile() {
    std::filesystem::create_directory(scratch / "product");
    std::ofstream(scratch / "outside.tif") << "no image";
  }
  ~OutsideFile() override { gkp_ClearNumberPreference("gridkit", "allow_outside_files"); }

  std::string product(const std::string& name) const {
    return (scratch / "product").string() + '/' + name + " h40.fake";
  }
  std::string outside() const { return (scratch / "product").string() + "/../outside.tif"; }

  const ScratchFolder scratch;
  const std::string words = outside() + ": outside the product's folder " +
                            (scratch / "product").string() +
                            "/ and not opened; the preference gridkit.allow_outside_files = 1 "
                            "allows it";
};

TEST_F(OutsideFile, IsNotOpenedForAProduct) {
  EXPECT_EQ(refusal(product("files")), product("files") + ": cannot be opened: gkf_Open: " + words);
  EXPECT_EQ(refusal(product("layers")),
            product("layers") + ": cannot be opened: gkl_LayerGetNames: " + words);
  EXPECT_EQ(refusal(product("streams")),
            product("streams") + ": cannot be opened: fake: no stream; " + words)
      << "a stream cannot report by itself";
}

TEST_F(OutsideFile, IsOpenedWhereThePreferenceAllowsIt) {
  gkp_SetNumberPreference("gridkit", "allow_outside_files", 1, nullptr);
  EXPECT_EQ(refusal(product("files")), "");
  EXPECT_EQ(refusal(product("streams")), "");
  EXPECT_EQ(refusal(product("layers")), product("layers") +
                                            ": cannot be opened: gkl_LayerGetNames: " + outside() +
                                            ": not a GeoTIFF file");
}

// The refusal belongs to the host's open: whoever calls the operations or the exports is free.
TEST_F(OutsideFile, IsOpenedOutsideOfAHostsOpen) {
  refusal(product("streams"));
  gkf_Stream* stream = gkf_fopen(outside().c_str(), "r");
  EXPECT_NE(stream, nullptr);
  gkf_fclose(stream);
  void* handle = ::dlopen(library.c_str(), RTLD_NOW);
  const auto open = reinterpret_cast<void* (*)(const char*, int32_t*, const char*)>(
      ::dlsym(handle, "fakeFileTitleIdentifyAndOpen"));
  int32_t title = -1;
  void* record = open(product("streams").c_str(), &title, "r");
  EXPECT_NE(record, nullptr);
  reinterpret_cast<int32_t (*)(void*)>(::dlsym(handle, "fakeFileClose"))(record);
  ::dlclose(handle);
}

TEST_F(Host, RefusesLayersAndListsWithTheirReports) {
  const Product product = plugin->open("h40.fake");
  EXPECT_THROW(product.open_layer("TWO"), Error);
  EXPECT_TRUE(product.data_names().empty());
  EXPECT_THROW(plugin->open("nolayers h40.fake").layer_names(), Error);
}

TEST_F(Host, ReadsDataByName) {
  const Product product = plugin->open("h40.fake");
  EXPECT_EQ(product.read_data("unknown"), std::nullopt);
  const auto data = product.read_data("known");
  ASSERT_TRUE(data.has_value());
  EXPECT_EQ(data->type, "T");
  EXPECT_EQ(data->dictionary, "D");
  EXPECT_EQ(data->bytes.size(), 2U);
}

TEST_F(Host, TellsALayerWithAMapFromOneWithout) {
  EXPECT_EQ(plugin->open("h40.fake").open_layer("ONE").map_info(), std::nullopt);
  const auto map = plugin->open("map h40.fake").open_layer("ONE").map_info();
  ASSERT_TRUE(map.has_value());
  EXPECT_EQ(map->projection, "UTM");
  EXPECT_EQ(map->pixel_size[1], 2);
}

TEST_F(Host, TakesOverTheNineValuesOfAProjection) {
  EXPECT_EQ(plugin->open("h40.fake").open_layer("ONE").map_projection(), std::nullopt);
  const auto map = plugin->open("map h40.fake").open_layer("ONE").map_projection();
  ASSERT_TRUE(map.has_value());
  EXPECT_EQ(map->name, "UTM");
  EXPECT_EQ(map->value(2), "WGS 84");
  EXPECT_EQ(map->value(3), std::nullopt);
  EXPECT_EQ(map->value(6), "") << "an empty value is a value";
  EXPECT_EQ(map->value(9), "0");
}

TEST_F(Host, TellsAProjectionThatCannotBeRead) {
  const auto told = [&](const std::string& path) -> std::string {
    try {
      plugin->open(path).open_layer("ONE").map_projection();
    } catch (const Error& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(told("map unsaid h40.fake"),
            "map unsaid h40.fake: the map projection of ONE cannot be read");
  EXPECT_EQ(told("map unknown h40.fake"),
            "map unknown h40.fake: the map projection of ONE cannot be read: fake: no such map");
}

TEST_F(Host, TellsABlockWithoutDataFromAFailure) {
  const gridkit::Layer layer = plugin->open("h40.fake").open_layer("ONE");
  std::vector<std::uint16_t> pixels;
  EXPECT_TRUE(layer.read_block(0, 0, pixels));
  EXPECT_EQ(pixels.size(), 16U);
  EXPECT_FALSE(layer.read_block(9, 0, pixels));
  EXPECT_THROW(plugin->open("fails h40.fake").open_layer("ONE").read_block(0, 0, pixels), Error);
}

// --- Whole images: blocks near the bottom are refused --------------------------------------------

struct Image {
  std::vector<std::uint16_t> pixels;
  std::vector<gridkit::LineRange> missing;
};

class WholeImage : public Host, public testing::WithParamInterface<int> {
 protected:
  Image read(int height, gridkit::Window window) {
    const Product product = plugin->open("h" + std::to_string(height) + ".fake");
    Image image;
    image.missing = gridkit::read_window(product, "ONE", window, [&](auto lines, std::int32_t) {
      image.pixels.insert(image.pixels.end(), lines.begin(), lines.end());
    });
    return image;
  }
};

// With a height that has a divisor of 7 to 10, one block size ends with the image and starts above
// the refused lines. With 10, or 5 samples a block, its columns end with the image too.
TEST_P(WholeImage, LosesNoLineThatTheFormatCanDeliver) {
  const int height = GetParam();
  const Image image = read(height, {0, 0, 10, height});
  ASSERT_EQ(image.pixels.size(), static_cast<std::size_t>(10 * height));
  // What some block size b in 1 to 10 can deliver of each line, by the plug-in's own rules.
  for (int line = 0; line < height; ++line) {
    int reach = 0;
    for (int b = 1; b <= std::min(10, height); ++b) {
      const int start = line / b * b;
      if (start >= height - 7 || start + b > height) continue;
      reach = std::max(reach, start + b < height ? 10 : 10 / b * b);
    }
    for (int column = 0; column < 10; ++column) {
      const int expected = column < reach ? line + 1 : 0;
      EXPECT_EQ(image.pixels[static_cast<std::size_t>(line * 10 + column)], expected)
          << "height " << height << ", line " << line << ", column " << column;
    }
    const bool told = std::any_of(image.missing.begin(), image.missing.end(), [&](auto range) {
      return line >= range.first && line <= range.last;
    });
    EXPECT_EQ(told, reach < 10) << "line " << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Heights, WholeImage,
                         testing::Values(10, 16, 17, 23, 40, 41, 42, 49, 53, 60, 64, 97));

TEST_F(WholeImage, PutsThePreferenceBack) {
  gkp_SetNumberPreference("import", "default_block_size", 3, nullptr);
  read(40, {0, 0, 10, 40});
  EXPECT_EQ(gkp_GetNumberPreference("import", "default_block_size", 0, nullptr), 3);
  gkp_ClearNumberPreference("import", "default_block_size");
  read(40, {0, 0, 10, 40});
  EXPECT_EQ(gkp_GetNumberPreference("import", "default_block_size", -1, nullptr), -1);
}

TEST_F(WholeImage, WindowsAreCropped) {
  const Image image = read(40, {3, 6, 5, 9});
  ASSERT_EQ(image.pixels.size(), 45U);
  EXPECT_EQ(image.pixels.front(), 7);
  EXPECT_EQ(image.pixels.back(), 15);
  EXPECT_TRUE(image.missing.empty());
}

TEST_F(WholeImage, WindowsOutsideAreRefused) {
  for (const gridkit::Window window : {gridkit::Window{-1, 0, 5, 5},
                                       {6, 0, 5, 5},
                                       {0, 36, 5, 5},
                                       {0, 0, 0, 5},
                                       {0, 0, 5, 2147483647}}) {
    EXPECT_THROW(read(40, window), Error);
  }
}

}  // namespace

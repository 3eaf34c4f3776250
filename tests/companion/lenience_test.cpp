// Products whose annotation holds values that its schema does not allow, through the shipped
// companion: what a lenient open passes over, how its table tells it, and the host's product over
// it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>

#include "companion/sample_products.h"
#include "gridkit/product.h"

namespace {

using gridkit::SampleError;
using simulate::Variant;

constexpr const char* sensor_path = "/level1Product/platform/orbit/orbitHeader/sensor";

// Puts a text in the place of the first value of an element after a mark.
void replace_value(const std::string& annotation, const std::string& mark,
                   const std::string& element, const std::string& value) {
  std::ifstream in(annotation);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  const std::string tag = '<' + element + '>';
  const std::size_t begin = text.find(tag, text.find(mark)) + tag.size();
  text.replace(begin, text.find('<', begin) - begin, value);
  std::ofstream(annotation) << text;
}

class Lenience : public testing::Test {
 protected:
  std::string other_processor(Variant variant) {
    const std::string annotation = products.simulated(variant, 70, 90, {"HH", "VV"});
    replace_value(annotation, "<orbitHeader>", "sensor", "IGOR");
    return annotation;
  }

  SampleProducts products;
};

TEST_F(Lenience, IsAskedFor) {
  const std::string annotation = other_processor(Variant::ssc);
  EXPECT_THROW(products.open(annotation), SampleError);
  const auto samples = gridkit::Samples::open_leniently(*products.plugin, annotation);
  EXPECT_EQ(samples.images().size(), 2U);
  ASSERT_EQ(samples.passed_over().size(), 1U);
  EXPECT_EQ(samples.passed_over()[0].find(annotation + ':'), 0U) << samples.passed_over()[0];
  EXPECT_NE(
      samples.passed_over()[0].find(std::string(sensor_path) +
                                    ": the value is not one of those allowed: found \"IGOR\""),
      std::string::npos)
      << samples.passed_over()[0];
}

TEST_F(Lenience, HasNothingToTellOfAValidProduct) {
  const std::string annotation = products.simulated(Variant::mgd, 70, 90);
  EXPECT_TRUE(gridkit::Samples::open_leniently(*products.plugin, annotation).passed_over().empty());
}

TEST_F(Lenience, EndsAtWhatPixelsNeed) {
  const std::string annotation = other_processor(Variant::ssc);
  replace_value(annotation, "<productVariantInfo>", "productVariant", "RAW");
  try {
    gridkit::Samples::open_leniently(*products.plugin, annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.code(), gkc_BadDescription);
    EXPECT_EQ(error.element(), "/level1Product/productInfo/productVariantInfo/productVariant");
    EXPECT_GT(error.text_line(), 0);
  }
}

TEST_F(Lenience, LayersAreMadeOfTheSamples) {
  for (const Variant variant : {Variant::ssc, Variant::mgd}) {
    const std::string valid = products.simulated(variant, 70, 90, {"HH", "VV"});
    const gridkit::Product strict = products.plugin->open(valid);
    const std::string other = other_processor(variant);
    EXPECT_THROW(products.plugin->open(other), gridkit::Error);
    const gridkit::Product lenient = products.plugin->open_leniently(other);
    EXPECT_TRUE(lenient.is_over_samples());
    EXPECT_FALSE(strict.is_over_samples());
    EXPECT_EQ(lenient.title(), strict.title());
    EXPECT_EQ(lenient.passed_over().size(), 1U);
    EXPECT_TRUE(lenient.data_names().empty());
    EXPECT_FALSE(lenient.read_data(":TSX_Beta0"));
    ASSERT_EQ(lenient.layer_names(), strict.layer_names());
    for (const std::string& name : strict.layer_names()) {
      const gridkit::Layer expected = strict.open_layer(name);
      const gridkit::Layer found = lenient.open_layer(name);
      EXPECT_EQ(found.pixel_type(), expected.pixel_type());
      EXPECT_EQ(found.layer_type(), expected.layer_type());
      EXPECT_EQ(found.width(), expected.width());
      EXPECT_EQ(found.height(), expected.height());
      EXPECT_FALSE(found.map_info());
      std::vector<std::uint16_t> of_samples;
      std::vector<std::uint16_t> of_plugin;
      ASSERT_TRUE(found.read_block(0, 0, of_samples));
      ASSERT_TRUE(expected.read_block(0, 0, of_plugin));
      EXPECT_EQ(of_samples, of_plugin) << name;
      // Of 70 lines and 90 samples this block holds 6 and 26.
      ASSERT_TRUE(found.read_block(1, 1, of_samples));
      EXPECT_EQ(of_samples[6U * 64U], 0);
      EXPECT_FALSE(found.read_block(2, 0, of_samples));
      EXPECT_FALSE(found.read_block(0, 2, of_samples));
    }
    EXPECT_THROW(lenient.open_layer("X_HV_MAGNITUDE_1"), gridkit::Error);
  }
}

TEST_F(Lenience, DataAreThoseThatTheCallerHandsIn) {
  const std::string annotation = other_processor(Variant::ssc);
  const gridkit::NamedData data = {{":A", {"type", "dictionary", {std::byte{7}}}}};
  const gridkit::Product product = products.plugin->open_leniently(annotation, data);
  EXPECT_EQ(product.data_names(), std::vector<std::string>{":A"});
  ASSERT_TRUE(product.read_data(":A"));
  EXPECT_EQ(product.read_data(":A")->bytes, std::vector<std::byte>{std::byte{7}});
  EXPECT_FALSE(product.read_data(":B"));
}

// A host that knows no leniency, and one that asks for a remark that there is not.
TEST_F(Lenience, OfTheTableIsBoundedByTheSizesThatACallerGives) {
  const std::string annotation = other_processor(Variant::ssc);
  const auto library = gridkit::companion_path(*products.plugin);
  void* const handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(handle, nullptr);
  const auto entry = reinterpret_cast<gkc_GetCompanionFunction>(::dlsym(handle, GKC_ENTRY));
  ASSERT_NE(entry, nullptr);
  const gkc_Companion& table = *entry();
  gkc_Error error{};
  error.size = sizeof error;
  gkc_Product* product = nullptr;
  gkc_OpenOptions older{};
  older.size = offsetof(gkc_OpenOptions, lenient);
  older.lenient = 1;
  EXPECT_EQ(table.open(annotation.c_str(), &older, &product, &error), gkc_BadDescription);
  EXPECT_EQ(product, nullptr);
  gkc_OpenOptions options{};
  options.size = sizeof options;
  options.lenient = 1;
  ASSERT_EQ(table.open(annotation.c_str(), &options, &product, &error), gkc_NoError);
  EXPECT_EQ(table.remark_count(product), 1);
  ASSERT_EQ(table.describe_remark(product, 0, &error), gkc_NoError);
  EXPECT_EQ(error.code, gkc_BadDescription);
  EXPECT_STREQ(error.element, sensor_path);
  EXPECT_EQ(error.path, annotation);
  EXPECT_EQ(table.describe_remark(product, 0, nullptr), gkc_NoError);
  EXPECT_EQ(table.describe_remark(product, 1, &error), gkc_WrongUse);
  EXPECT_EQ(table.describe_remark(product, -1, nullptr), gkc_WrongUse);
  EXPECT_EQ(table.remark_count(nullptr), 0);
  table.close(product);
  ::dlclose(handle);
}

}  // namespace

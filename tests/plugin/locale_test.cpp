// What a program's locale must not change: the plug-in as it is loaded, the host's services,
// readers and writers, and the annotation classes, once in the locale "C" and once in another.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "gridkit/os_error.h"
#include "gridkit/plugin.h"
#include "gridkit/preference.h"
#include "gridkit/raster_writer.h"
#include "gridkit/text.h"
#include "level1bProduct40/version40.h"
#include "support/host_life.h"
#include "support/made_locale.h"
#include "support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

// Numbers with groups of one to three digits and a comma for the point, letters of every kind.
class Grouping : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  char do_decimal_point() const override { return ','; }
  std::string do_grouping() const override { return "\3"; }
};

// The locale of the C library by its name, "C" or one that is made; and whether streams group.
struct Setting {
  const char* name;
  const char* locale;
  bool streams_group;
};

std::ostream& operator<<(std::ostream& out, const Setting& setting) {
  return out << setting.name;
}

// While it lives the process has that locale.
class ProcessLocale {
 public:
  explicit ProcessLocale(const Setting& setting) {
    if (std::string(setting.locale) != "C") made_.emplace(setting.locale);
    if (setting.streams_group) {
      // Without a name, it leaves the C library's locale as it is.
      std::locale::global(std::locale(std::locale::classic(), new Grouping));
    }
  }
  ProcessLocale(const ProcessLocale&) = delete;
  ProcessLocale& operator=(const ProcessLocale&) = delete;
  ~ProcessLocale() { std::locale::global(std::locale::classic()); }

 private:
  std::optional<MadeLocale> made_;
};

std::string bytes_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string taken(char* text) {
  std::string copy = text == nullptr ? "(null)" : text;
  gkm_HeapFree(text);
  return copy;
}

// Each line tells one thing, so that a difference shows where it is.
using Told = std::vector<std::string>;

void tell_services(Told& told, const fs::path& folder) {
  told.push_back(taken(gks_Sprintf(nullptr, "%.3f %'d %g", nullptr, 1234.5, 1234567, 1e-7)));
  for (const char* name : {"X_HI_MAGNITUDE_1", "X_HH_MAGNITUDE_1", "\xC3\x89_HH_MAGNITUDE_1",
                           "x_HH_MAGNITUDE_1", "X_HH_magnitude_1", "X_\xC4\xB0H_PHASE_2"}) {
    gks_REComp("^[A-Z]_[A-Z][A-Z]_[A-Z]*_[1-9][0-9]*$");
    told.push_back(name + std::string(gks_REExec(name) != 0 ? " matches" : " does not match"));
  }
  told.push_back(std::to_string(gks_Eqnic("TITLE", "title", 5)));
  told.push_back(std::to_string(gkt_Text_atol("1.234")));
  for (const int error : {EACCES, EIO, EMFILE, ELOOP}) {
    told.push_back(gridkit::os_error_in_words(error));
  }
  const fs::path preferences = folder / "preferences";
  std::ofstream(preferences) << "locale.number = 1.25\n";
  EXPECT_EQ(gkp_LoadPreferences(preferences.c_str(), nullptr), 0);
  told.push_back(gkp_GetNumberPreference("locale", "number", 0, nullptr) == 1.25 ? "1.25" : "else");
}

void tell_writers(Told& told, const fs::path& folder) {
  const std::vector<std::uint16_t> pixels(std::size_t{3} * 1200, 1234);
  gridkit::RasterOptions options;
  options.band_name = "magnitude";
  options.no_data = 0.5;
  options.georeference = {.epsg = 32632, .transform = {612345.25, 2.5, 0, 5312345.75, 0, -2.5}};
  const auto write = [&](auto* create, const std::string& name) {
    const std::string path = folder / name;
    const auto writer = create(path, 1200, 3, options);
    writer->write_lines(std::as_bytes(std::span(pixels)), 3);
    writer->add_metadata("KEY", "1.5");
    writer->finish();
    told.push_back(bytes_of(path));
  };
  write(&gridkit::create_geotiff, "raster.tif");
  write(&gridkit::create_cog, "cog.tif");
  write(&gridkit::create_png, "raster.png");
  write(&gridkit::create_envi, "raster.raw");
  told.push_back(bytes_of(folder / "raster.raw.hdr"));
}

// The annotation read and written back by its classes, in the three forms that they have.
void tell_rewrite(Told& told, const std::string& annotation, const fs::path& folder) {
  lmx::elmx_error error{};
  const version40::c_version40 document(annotation.c_str(), &error);
  EXPECT_EQ(error, lmx::error_none);
  std::string text;
  EXPECT_EQ(document.marshal(&text), lmx::error_none);
  std::ostringstream stream;
  EXPECT_EQ(document.marshal(stream), lmx::error_none);
  const fs::path file = folder / "rewritten.xml";
  EXPECT_EQ(document.marshal(file.c_str()), lmx::error_none);
  told.insert(told.end(), {text, stream.str(), bytes_of(file)});
}

class Locale : public testing::TestWithParam<Setting> {
 protected:
  // The products are made before the locale changes: their maker is a program, not the library.
  Locale() {
    for (const char* variant : {"SSC", "MGD", "GEC", "EEC"}) {
      const fs::path folder = scratch / variant;
      fs::create_directory(folder);
      products.push_back(small_product(variant, folder, simulate::Profile::typical));
    }
    fs::create_directory(scratch / "full");
    full = small_product("SSC", scratch / "full", simulate::Profile::maximal);
  }

  Told tell() const {
    Told told;
    for (const std::string& product : products) {
      for (const HostStep& step : host_life(plugin, product, [] { return 0L; })) {
        told.push_back(product + ' ' + step.name + ": " + step.outcome);
      }
    }
    tell_services(told, scratch.path());
    tell_writers(told, scratch.path());
    for (const std::string& annotation : {products[0], full}) {
      tell_rewrite(told, annotation, scratch.path());
    }
    return told;
  }

  const ScratchFolder scratch;
  const std::shared_ptr<gridkit::Plugin> plugin = gridkit::Plugin::load(TSX_PLUGIN);
  std::vector<std::string> products;
  std::string full;
};

TEST_P(Locale, ChangesNoByteOfWhatIsReadAndWritten) {
  const Told in_c = tell();
  for (const std::string& line : in_c) {
    EXPECT_FALSE(line.empty());
    EXPECT_EQ(line.find("error: "), std::string::npos) << line;
  }
  const ProcessLocale changed(GetParam());
  const Told in_other = tell();
  ASSERT_EQ(in_other.size(), in_c.size());
  for (std::size_t i = 0; i < in_c.size(); ++i) EXPECT_TRUE(in_other[i] == in_c[i]) << in_other[i];
}

INSTANTIATE_TEST_SUITE_P(Locales, Locale,
                         testing::Values(Setting{"C", "C", false},
                                         Setting{"Turkish", "tr_TR", false},
                                         Setting{"German", "de_DE", false},
                                         Setting{"American", "en_US", false},
                                         Setting{"GroupingStreams", "C", true},
                                         Setting{"GermanWithGroupingStreams", "de_DE", true}),
                         [](const auto& setting) { return std::string(setting.param.name); });

// What the test rests on: these locales do change what the C and the C++ library do.
TEST(LocaleOfTheProcess, ChangesTheLibrariesBeneath) {
  const ProcessLocale changed({"", "de_DE", true});
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5");
  std::ostringstream stream;
  stream << 1234567;
  EXPECT_EQ(stream.str(), "1.234.567");
}

}  // namespace

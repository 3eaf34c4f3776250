#include "gridkit/raster_writer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

class Writer : public testing::Test {
 protected:
  static std::span<const std::byte> line() {
    static const std::vector<std::uint16_t> pixels = {1, 2, 3};
    return std::as_bytes(std::span<const std::uint16_t>(pixels));
  }
  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
};

TEST_F(Writer, LeavesNoFileWithoutFinishing) {
  for (auto* create : {gridkit::create_geotiff, gridkit::create_png}) {
    create((folder / "x").string(), 3, 2, {})->write_lines(line(), 1);
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, FinishesUnderTheFinalNameOnly) {
  for (auto* create : {gridkit::create_geotiff, gridkit::create_png}) {
    const auto writer = create((folder / "x").string(), 3, 1, {});
    writer->write_lines(line(), 1);
    writer->add_metadata("KEY", "value");
    EXPECT_FALSE(fs::exists(folder / "x"));
    writer->finish();
    EXPECT_TRUE(fs::exists(folder / "x"));
    fs::remove(folder / "x");
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, RefusesLinesThatDoNotFit) {
  const auto writer = gridkit::create_geotiff((folder / "x").string(), 3, 1, {});
  EXPECT_THROW(writer->write_lines(line(), 2), gridkit::Error);
  EXPECT_THROW(writer->write_lines(line().first(2), 1), gridkit::Error);
  writer->write_lines(line(), 1);
  EXPECT_THROW(writer->write_lines(line(), 1), gridkit::Error);
}

TEST_F(Writer, RefusesPlacesItCannotWriteTo) {
  for (auto* create : {gridkit::create_geotiff, gridkit::create_png}) {
    EXPECT_THROW(create("/nonexistent/x", 3, 1, {}), gridkit::Error);
    EXPECT_THROW(create((folder / "x").string(), 0, 1, {}), gridkit::Error);
  }
}

TEST_F(Writer, APngNeedsAllItsLines) {
  const auto writer = gridkit::create_png((folder / "x").string(), 3, 2, {});
  writer->write_lines(line(), 1);
  EXPECT_THROW(writer->finish(), gridkit::Error);
}

TEST_F(Writer, LinesNeverWrittenTakeNoRoomInASparseFile) {
  gridkit::RasterOptions options;
  options.sparse = true;
  gridkit::create_geotiff((folder / "x").string(), 20000, 10000, options)->finish();
  EXPECT_LT(fs::file_size(folder / "x"), 1000000U) << "the image has 400 MB";
}

}  // namespace

#include "gridkit/raster_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr std::array creators = {gridkit::create_geotiff, gridkit::create_cog, gridkit::create_png,
                                 gridkit::create_envi};

std::string text_of(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

void put(const fs::path& path, const std::string& text) {
  std::ofstream(path) << text;
}

// The message of the refusal, empty where there is none.
template <class Work>
std::string refusal(Work work) {
  try {
    work();
  } catch (const gridkit::Error& error) {
    return error.what();
  }
  return {};
}

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
  for (auto* create : creators) {
    create((folder / "x").string(), 3, 2, {})->write_lines(line(), 1);
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, FinishesUnderTheFinalNameOnly) {
  for (auto* create : creators) {
    const auto writer = create((folder / "x").string(), 3, 1, {});
    writer->write_lines(line(), 1);
    writer->add_metadata("KEY", "value");
    EXPECT_FALSE(fs::exists(folder / "x"));
    writer->finish();
    EXPECT_TRUE(fs::exists(folder / "x"));
    fs::remove(folder / "x");
    fs::remove(folder / "x.hdr");
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, LeavesAnEnviHeaderThatAppearedMeanwhile) {
  gridkit::RasterOptions options;
  options.existing = gridkit::Existing::refuse;
  const auto writer = gridkit::create_envi((folder / "x").string(), 3, 1, options);
  writer->write_lines(line(), 1);
  put(folder / "x.hdr", "somebody's");
  EXPECT_EQ((folder / "x.hdr").string() + ": exists already", refusal([&] { writer->finish(); }));
  EXPECT_EQ("somebody's", text_of(folder / "x.hdr"));
  EXPECT_FALSE(fs::exists(folder / "x"));
}

TEST_F(Writer, ReplacesTheEnviHeaderThatALinkStandsFor) {
  put(folder / "header", "old");
  fs::create_symlink("header", folder / "x.hdr");
  const auto writer = gridkit::create_envi((folder / "x").string(), 3, 1, {});
  writer->write_lines(line(), 1);
  writer->finish();
  EXPECT_TRUE(fs::is_symlink(folder / "x.hdr"));
  EXPECT_TRUE(text_of(folder / "header").starts_with("ENVI\n"));
}

TEST_F(Writer, RefusesLinesThatDoNotFit) {
  for (auto* create : creators) {
    const auto writer = create((folder / "x").string(), 3, 1, {});
    EXPECT_THROW(writer->write_lines(line(), 2), gridkit::Error);
    EXPECT_THROW(writer->write_lines(line(), -1), gridkit::Error);
    EXPECT_THROW(writer->write_lines(line().first(2), 1), gridkit::Error);
    writer->write_lines(line(), 1);
    EXPECT_THROW(writer->write_lines(line(), 1), gridkit::Error);
  }
}

TEST_F(Writer, RefusesPlacesItCannotWriteTo) {
  for (auto* create : creators) {
    EXPECT_THROW(create("/nonexistent/x", 3, 1, {}), gridkit::Error);
    EXPECT_THROW(create((folder / "x").string(), 0, 1, {}), gridkit::Error);
  }
}

TEST_F(Writer, PngAndEnviNeedAllTheirLines) {
  for (auto* create : {gridkit::create_png, gridkit::create_envi}) {
    const auto writer = create((folder / "x").string(), 3, 2, {});
    writer->write_lines(line(), 1);
    EXPECT_THROW(writer->finish(), gridkit::Error);
  }
}

TEST_F(Writer, APngHoldsWholeRealNumbersAlone) {
  const std::string path = (folder / "x").string();
  const auto refusal_of = [&](gridkit::SampleType type) {
    return refusal([&] { gridkit::create_png(path, 3, 1, {.type = type}); });
  };
  EXPECT_EQ(path + ": a PNG holds no floating-point samples", refusal_of(gridkit::SampleType::f32));
  EXPECT_EQ(path + ": a PNG holds no complex samples", refusal_of(gridkit::SampleType::cs16));
  EXPECT_EQ(path + ": a PNG holds no complex samples", refusal_of(gridkit::SampleType::cf32));
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Writer, ReplacesAnExistingFileOnlyWhenItMay) {
  gridkit::RasterOptions options;
  const std::string path = (folder / "x").string();
  for (auto* create : creators) {
    put(path, "precious");
    options.existing = gridkit::Existing::refuse;
    EXPECT_EQ(path + ": exists already", refusal([&] { create(path, 3, 1, options); }));
    EXPECT_EQ("precious", text_of(path));
    options.existing = gridkit::Existing::replace;
    const auto writer = create(path, 3, 1, options);
    writer->write_lines(line(), 1);
    EXPECT_EQ("precious", text_of(path));
    writer->finish();
    EXPECT_NE("precious", text_of(path));
  }
}

TEST_F(Writer, DoesNotReplaceAFileThatAppearedMeanwhile) {
  gridkit::RasterOptions options;
  options.existing = gridkit::Existing::refuse;
  const std::string path = (folder / "x").string();
  for (auto* create : creators) {
    {
      const auto writer = create(path, 3, 1, options);
      writer->write_lines(line(), 1);
      put(path, "precious");
      EXPECT_EQ(path + ": exists already", refusal([&] { writer->finish(); }));
    }
    EXPECT_EQ("precious", text_of(path));
    fs::remove(path);
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, LeavesTheOldFileWithoutFinishing) {
  const std::string path = (folder / "x").string();
  put(path, "precious");
  put(path + ".hdr", "header");
  for (auto* create : creators) create(path, 3, 1, {})->write_lines(line(), 1);
  EXPECT_EQ("precious", text_of(path));
  EXPECT_EQ("header", text_of(path + ".hdr"));
}

TEST_F(Writer, TwoMayWriteTheSameFileSideBySide) {
  const std::string path = (folder / "x").string();
  for (auto* create : creators) {
    const auto one = create(path, 3, 1, {});
    const auto other = create(path, 3, 1, {});
    one->write_lines(line(), 1);
    other->write_lines(line(), 1);
    one->finish();
    other->finish();
    EXPECT_TRUE(fs::exists(path));
  }
}

TEST_F(Writer, ACogIsGivenUpWhenItsProgressIsRefused) {
  gridkit::RasterOptions options;
  int calls = 0;
  options.progress = [&](double) { return ++calls < 3; };
  {
    // Some tiles, so that there is progress to tell.
    const auto writer = gridkit::create_cog((folder / "x").string(), 3000, 1000, options);
    const std::vector<std::byte> lines(2 * 3000 * 1000);
    writer->write_lines(lines, 1000);
    EXPECT_THROW(writer->finish(), gridkit::Error);
  }
  EXPECT_GT(calls, 1);
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Writer, AStreamGetsTheBytesOfTheFile) {
  struct {
    decltype(&gridkit::create_png) create;
    decltype(&gridkit::stream_png) stream;
  } const ways[] = {{gridkit::create_png, gridkit::stream_png},
                    {gridkit::create_envi, gridkit::stream_envi}};
  for (const auto& [create, stream] : ways) {
    const auto file = create((folder / "x").string(), 3, 1, {});
    std::string streamed;
    const auto sink = [&](std::span<const std::byte> bytes) {
      streamed.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    const auto other = stream(sink, "the stream", 3, 1, {});
    for (const auto& writer : {file.get(), other.get()}) {
      writer->add_metadata("KEY", "value");
      writer->write_lines(line(), 1);
      writer->finish();
    }
    EXPECT_EQ(text_of(folder / "x"), streamed);
  }
}

TEST_F(Writer, AStreamEndsWithWhatItsSinkThrows) {
  for (auto* stream : {gridkit::stream_png, gridkit::stream_envi}) {
    int calls = 0;
    const auto sink = [&](std::span<const std::byte>) {
      if (++calls > 1) throw gridkit::Error("full");
    };
    EXPECT_EQ("full", refusal([&] {
                const auto writer = stream(sink, "the stream", 3, 2, {});
                for (int i = 0; i < 2; ++i) writer->write_lines(line(), 1);
                writer->finish();
              }));
  }
}

TEST_F(Writer, AStreamIsCalledByItsName) {
  const auto sink = [](std::span<const std::byte>) {};
  for (auto* stream : {gridkit::stream_png, gridkit::stream_envi}) {
    const auto writer = stream(sink, "the stream", 3, 2, {});
    EXPECT_EQ("the stream: lines are missing", refusal([&] { writer->finish(); }));
  }
}

TEST_F(Writer, AnEnviFileIsItsSamplesAndAHeader) {
  gridkit::RasterOptions options;
  options.band_name = "name";
  options.unit = "dB";
  options.no_data = 7;
  const auto writer = gridkit::create_envi((folder / "x.img").string(), 3, 1, options);
  writer->write_lines(line(), 1);
  writer->add_metadata("FIRST", "a {b} c");
  writer->add_metadata("SECOND", "two");
  writer->finish();
  const std::string samples = text_of(folder / "x.img");
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(line().data()), 6), samples);
  const std::string order = std::endian::native == std::endian::little ? "0" : "1";
  EXPECT_EQ(
      "ENVI\ndescription = {\n  FIRST: a [b] c,\n  SECOND: two}\nsamples = 3\nlines = 1\n"
      "bands = 1\nheader offset = 0\nfile type = ENVI Standard\ndata type = 12\n"
      "interleave = bsq\nbyte order = " +
          order +
          "\nband names = {name}\n"
          "data units = {dB}\ndata ignore value = 7\n",
      text_of(folder / "x.img.hdr"));
}

TEST_F(Writer, TellsInWordsWhereItCannotWrite) {
  const std::string path = folder.string();
  for (auto* create : creators) {
    EXPECT_EQ(path + ": cannot be written: it is a folder; name the file to write",
              refusal([&] { create(path, 3, 1, {}); }));
    EXPECT_EQ("/dev/null: cannot be written: it is no regular file",
              refusal([&] { create("/dev/null", 3, 1, {}); }));
    EXPECT_EQ(path + "/a/b: cannot be written: there is no folder " + path + "/a",
              refusal([&] { create(path + "/a/b", 3, 1, {}); }));
    fs::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(path + "/link: cannot be written: a link to nowhere",
              refusal([&] { create(path + "/link", 3, 1, {}); }));
    fs::remove(folder / "link");
    EXPECT_TRUE(fs::is_empty(folder));
  }
}

TEST_F(Writer, LinesNeverWrittenTakeNoRoomInASparseFile) {
  gridkit::RasterOptions options;
  options.sparse = true;
  gridkit::create_geotiff((folder / "x").string(), 20000, 10000, options)->finish();
  EXPECT_LT(fs::file_size(folder / "x"), 1000000U) << "the image has 400 MB";
}

}  // namespace

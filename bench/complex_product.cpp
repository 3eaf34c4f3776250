#include "bench/complex_product.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "gridkit/preference.h"
#include "tools/simulate/product.h"

namespace bench {

namespace fs = std::filesystem;

namespace {

fs::path make_folder() {
  std::string name = fs::temp_directory_path() / "tsx-bench-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder " + name);
  return name;
}

fs::path image_below(const fs::path& folder) {
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() == ".cos") return entry.path();
  }
  throw std::runtime_error("no image below " + folder.string());
}

std::uint16_t pixel_of(const Kind& kind, std::int16_t i, std::int16_t q) {
  const auto re = static_cast<float>(i);
  const auto im = static_cast<float>(q);
  if (!kind.is_phase) return static_cast<std::uint16_t>(std::sqrt(re * re + im * im));
  if (i == 0 || q == 0) return 0;
  const auto angle = static_cast<float>(std::atan2(double{im}, double{re}));
  return static_cast<std::uint16_t>(
      static_cast<std::int32_t>(static_cast<double>(angle) * 10430.3783505));
}

std::int16_t number_in(const unsigned char* bytes) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1]));
}

}  // namespace

std::vector<std::uint16_t> plain_block(const ComplexProduct& product, const Kind& kind,
                                       std::int32_t size, std::int32_t row, std::int32_t column) {
  std::ifstream file(product.image(), std::ios::binary);
  std::vector<unsigned char> line(4 * static_cast<std::size_t>(size));
  std::vector<std::uint16_t> pixels;
  for (std::int32_t j = 0; j < size; ++j) {
    file.seekg(product.offset_of(std::int64_t{row} * size + j, std::int64_t{column} * size));
    file.read(reinterpret_cast<char*>(line.data()), static_cast<std::streamsize>(line.size()));
    if (!file) throw std::runtime_error("the plain reader finds no block");
    for (std::size_t k = 0; k < line.size(); k += 4) {
      pixels.push_back(pixel_of(kind, number_in(&line[k]), number_in(&line[k + 2])));
    }
  }
  return pixels;
}

ComplexProduct::ComplexProduct(std::int32_t lines, std::int32_t samples, Content content)
    : folder_(make_folder()), lines_(lines), samples_(samples) {
  try {
    simulate::Options options;
    options.lines = lines;
    options.samples = samples;
    options.empty_images = true;
    annotation_ = simulate::write_product_folder(options, folder_);
    image_ = image_below(folder_);
    if (content == Content::noise) fill_with_noise();
  } catch (...) {
    fs::remove_all(folder_);
    throw;
  }
}

ComplexProduct::~ComplexProduct() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

// All 32 bits of every sample are random, so that no branch of a conversion can be foretold.
void ComplexProduct::fill_with_noise() const {
  std::fstream file(image_, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(offset_of(0, -2));
  std::vector<std::uint64_t> line((static_cast<std::size_t>(samples_) + 3) / 2);
  const auto bytes = 4 * (static_cast<std::streamsize>(samples_) + 2);
  std::uint64_t state = 88172645463325252U;
  for (std::int32_t i = 0; i < lines_; ++i) {
    for (std::uint64_t& word : line) {
      state ^= state << 13U;
      state ^= state >> 7U;
      state ^= state << 17U;
      word = state;
    }
    file.write(reinterpret_cast<const char*>(line.data()), bytes);
  }
  if (!file.flush()) throw std::runtime_error(image_.string() + ": cannot be written");
}

OpenLayer::OpenLayer(const ComplexProduct& product, const char* name, std::int32_t block_size)
    : file_(nullptr), size_(block_size) {
  std::int32_t title = -1;
  file_ = tsxFileTitleIdentifyAndOpen(product.annotation().c_str(), &title, "r");
  if (file_ == nullptr || title != 0) throw std::runtime_error("the product does not open");
  gkp_SetNumberPreference("import", "default_block_size", block_size, nullptr);
  std::int32_t pixel_type = 0;
  std::int32_t layer_type = 0;
  std::int32_t w = 0;
  std::int32_t h = 0;
  tsxLayerOpen(file_, name, &pixel_type, &width_, &height_, &layer_type, &w, &h, &layer_);
  if (layer_ == nullptr || w != block_size || h != block_size) {
    tsxFileClose(file_);
    throw std::runtime_error(std::string("no layer ") + name);
  }
}

OpenLayer::~OpenLayer() {
  tsxLayerClose(layer_);
  tsxFileClose(file_);
}

bool OpenLayer::read(std::int32_t row, std::int32_t column, std::uint16_t* pixels) const {
  void* block = pixels;
  if (tsxLayerRasterRead(layer_, row, column, &block) != 0) {
    throw std::runtime_error("a block cannot be read");
  }
  return block != nullptr;
}

std::int64_t OpenLayer::sweep() const {
  std::vector<std::uint16_t> pixels(static_cast<std::size_t>(size_) *
                                    static_cast<std::size_t>(size_));
  std::int64_t came = 0;
  for (std::int32_t row = 0; row < rows(); ++row) {
    for (std::int32_t column = 0; column < columns(); ++column) {
      if (read(row, column, pixels.data())) ++came;
    }
  }
  return came;
}

std::int64_t OpenLayer::bytes_read() const {
  return gkf_StreamBytesRead(cosar_file(*file_, 0));
}

}  // namespace bench

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "record/exports.h"
#include "record/tsx_file.h"

namespace bench {

// A simulated complex product in a temporary folder of its own, removed with its owner.
class ComplexProduct {
 public:
  enum class Content { noise, sparse };  // sparse: zeros that take no room on disk

  ComplexProduct(std::int32_t lines, std::int32_t samples, Content content);
  ComplexProduct(const ComplexProduct&) = delete;
  ComplexProduct& operator=(const ComplexProduct&) = delete;
  ~ComplexProduct();

  const std::filesystem::path& folder() const { return folder_; }
  const std::string& annotation() const { return annotation_; }
  const std::filesystem::path& image() const { return image_; }
  std::int32_t lines() const { return lines_; }
  std::int32_t samples() const { return samples_; }

  // Byte of a sample in the image file.
  std::int64_t offset_of(std::int64_t line, std::int64_t sample) const {
    return 4 * ((line + 4) * (std::int64_t{samples_} + 2) + 2 + sample);
  }

 private:
  void fill_with_noise() const;

  std::filesystem::path folder_;
  std::string annotation_;
  std::filesystem::path image_;
  std::int32_t lines_;
  std::int32_t samples_;
};

// A kind of pixels of complex samples, and the first layer of it.
struct Kind {
  const char* name;
  const char* layer;
  bool is_phase;
};

// A block of [size][size] pixels by a reader of the simplest kind, sample by sample, to check
// others against. It must lie inside the image. Throws std::runtime_error.
std::vector<std::uint16_t> plain_block(const ComplexProduct& product, const Kind& kind,
                                       std::int32_t size, std::int32_t row, std::int32_t column);

// A layer of an open complex product, read through the plug-in's own functions.
class OpenLayer {
 public:
  // `name` is one of the product's layer names; the product is read in blocks of that size.
  OpenLayer(const ComplexProduct& product, const char* name, std::int32_t block_size);
  OpenLayer(const OpenLayer&) = delete;
  OpenLayer& operator=(const OpenLayer&) = delete;
  ~OpenLayer();

  std::int32_t rows() const { return (height_ + size_ - 1) / size_; }
  std::int32_t columns() const { return (width_ + size_ - 1) / size_; }
  std::int32_t block_size() const { return size_; }

  // One block into `pixels`; false when the plug-in has no data for it. Throws std::runtime_error.
  bool read(std::int32_t row, std::int32_t column, std::uint16_t* pixels) const;

  // Reads every block, row of blocks by row of blocks; the number of blocks that came.
  std::int64_t sweep() const;

  // How many bytes of the image the stream has read so far.
  std::int64_t bytes_read() const;

 private:
  TsxFile* file_;
  TsxLayer* layer_ = nullptr;
  std::int32_t size_;
  std::int32_t width_ = 0;
  std::int32_t height_ = 0;
};

}  // namespace bench

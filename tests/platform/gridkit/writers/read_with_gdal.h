#pragma once

#include <gdal.h>

#include <stdexcept>
#include <string>
#include <vector>

// What GDAL itself reads of an image file with one of its drivers: the word of another about what
// the writers wrote. Opened for as long as it lives.
class GdalImage {
 public:
  // `driver` is GDAL's name of it, such as "GTiff".
  GdalImage(const std::string& path, const char* driver) {
    GDALAllRegister();
    const char* const drivers[] = {driver, nullptr};
    file_ = GDALOpenEx(path.c_str(), GDAL_OF_RASTER, drivers, nullptr, nullptr);
    if (file_ == nullptr) throw std::runtime_error(path + " is not opened");
  }
  GdalImage(const GdalImage&) = delete;
  GdalImage& operator=(const GdalImage&) = delete;
  ~GdalImage() { GDALClose(file_); }

  GDALDataType type() const { return GDALGetRasterDataType(band()); }

  // All samples of the one band, which are of that type.
  template <class Sample>
  std::vector<Sample> samples() const {
    const int width = GDALGetRasterXSize(file_);
    const int height = GDALGetRasterYSize(file_);
    std::vector<Sample> samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    if (GDALRasterIO(band(), GF_Read, 0, 0, width, height, samples.data(), width, height, type(), 0,
                     0) != CE_None) {
      throw std::runtime_error("no samples are read");
    }
    return samples;
  }

  // Of the image; empty where there is none of the key.
  std::string metadata(const char* key, const char* domain = nullptr) const {
    const char* const value = GDALGetMetadataItem(file_, key, domain);
    return value == nullptr ? "" : value;
  }

 private:
  GDALRasterBandH band() const { return GDALGetRasterBand(file_, 1); }

  GDALDatasetH file_ = nullptr;
};

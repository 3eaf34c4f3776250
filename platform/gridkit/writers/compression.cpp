#include "gridkit/writers/compression.h"

namespace gridkit {

const char* gdal_name(Compression compression) {
  switch (compression) {
    case Compression::none:
      return "NONE";
    case Compression::deflate:
      return "DEFLATE";
    case Compression::zstd:
      return "ZSTD";
    case Compression::lzw:
      return "LZW";
  }
  return "NONE";
}

bool has_predictor(SampleType type) {
  return type != SampleType::cs16 && type != SampleType::cf32;
}

}  // namespace gridkit

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/simulate/scene.h"

namespace simulate {

// What the annotation tells beside the scene itself.
struct AnnotationSource {
  const Scene& scene;
  std::string name;                                   // of the product: folder and main file
  Utc generated;                                      // when the product was made
  std::map<std::string, std::uint64_t> file_bytes{};  // sizes by path below the product's folder
  std::int32_t repeats = 1;  // grows the repeating records of large annotations

  const Options& options() const { return scene.options; }
  bool has_optional() const { return options().profile != Profile::minimal; }
  bool has_all() const { return options().profile == Profile::maximal; }
  std::string beam() const {
    constexpr const char* texts[] = {"strip_005", "spot_010", "scan_003"};
    return texts[static_cast<int>(options().mode)];
  }
  std::string image_name(const std::string& polarisation) const {
    return "IMAGE_" + polarisation + "_SRA_" + beam() + (scene.is_complex() ? ".cos" : ".tif");
  }
  std::string variant_text() const {
    constexpr const char* texts[] = {"SSC", "MGD", "GEC", "EEC"};
    return texts[static_cast<int>(options().variant)];
  }
  std::string mode_text() const {
    constexpr const char* texts[] = {"SM", "SL", "SC"};
    return texts[static_cast<int>(options().mode)];
  }
  // As order and calibration spell the mode out.
  std::string mode_name() const {
    constexpr const char* texts[] = {"StripMap", "SpotLight", "ScanSAR"};
    return texts[static_cast<int>(options().mode)];
  }
  std::string polarisation_mode() const {
    const std::size_t layers = options().polarisations.size();
    return layers == 1 ? "SINGLE" : (layers == 2 ? "DUAL" : "QUAD");
  }
  char polarisation_letter() const { return polarisation_mode().front(); }
  std::string look_text() const { return options().look == Look::right ? "RIGHT" : "LEFT"; }

  // The time in the middle of the n-th of `count` equal parts of the scene.
  Utc time_at(int n, int count) const {
    return scene.utc(scene.start + (scene.stop - scene.start) * (n + 0.5) / count);
  }

  // Zero-Doppler time of an acquired line, from 0.
  Utc time_of_line(std::int64_t line) const {
    return scene.utc(scene.start + (scene.stop - scene.start) * static_cast<double>(line) /
                                       (scene.options.lines - 1));
  }
};

}  // namespace simulate

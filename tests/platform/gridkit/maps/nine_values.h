#pragma once

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <limits>
#include <memory>
#include <string>

#include "gridkit/map_projection.h"
#include "gridkit/memory.h"
#include "tests/platform/gridkit/maps/map_image.h"

// The nine MIF values as plain texts, on their way to projections and back.

struct ProjectionDeleter {
  void operator()(gkj_Projection* projection) const { gkj_ProjectionFree(&projection); }
};
using Projection = std::unique_ptr<gkj_Projection, ProjectionDeleter>;

// The name and the values 2 to 9; "-" stands for null, so that a table of them reads well.
using Nine = std::array<std::string, 9>;

inline Nine to_mif(const gkj_Projection* projection, gke_Report** err = nullptr) {
  char* name = nullptr;
  std::array<void*, 8> v{};
  gkj_ProjectionConvertToMIF(projection, &name, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                             &v[7], err);
  Nine nine;
  nine[0] = name == nullptr ? "-" : name;
  gkm_HeapFree(name);
  for (std::size_t i = 0; i < v.size(); ++i) {
    nine[i + 1] = v[i] == nullptr ? "-" : static_cast<char*>(v[i]);
    gkm_HeapFree(v[i]);
  }
  return nine;
}

inline Projection from_mif(Nine nine, gke_Report** err = nullptr) {
  const auto v = [&](std::size_t number) -> void* {
    std::string& text = nine[number - 1];
    return text == "-" ? nullptr : text.data();
  };
  return Projection(gkj_ProjectionConvertFromMIF(static_cast<const char*>(v(1)), v(2), v(3), v(4),
                                                 v(5), v(6), v(7), v(8), v(9), err));
}

inline int mark_of(const Projection& projection) {
  return gkj_MapProjectionCSRGet(projection.get(), "Gkj_ProParameters")->support->mark;
}

inline double number(const std::string& text) {
  double value = std::numeric_limits<double>::quiet_NaN();
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// What the nine values are refused with.
inline std::string refusal_from(const Nine& nine) {
  return report_of([&](auto* err) { EXPECT_EQ(from_mif(nine, err), nullptr); });
}

inline const Nine utm33 = {"UTM", "WGS 84", "metre", "33", "N", "0.9996", "-", "500000", "0"};
inline const Nine polar71 = {
    "Polar Stereographic", "WGS 84", "metre", "-45", "N", "70", "-", "0", "0"};

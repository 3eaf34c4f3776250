#pragma once

#include <gtest/gtest.h>

#include <string>

#include "level1bProduct40/version40.h"

// The smallest element with members of several kinds, and a reader of texts.

template <class Class>
lmx::elmx_error read(Class& object, const std::string& text) {
  return object.unmarshal(text);
}

inline const std::string general_header =
    "<generalHeader fileName=\"f\"><itemName>i</itemName><mission>m</mission><source>s</source>"
    "<destination>d</destination><generationSystem version=\"1\">g</generationSystem>"
    "<generationTime>2008-03-10T13:32:20Z</generationTime></generalHeader>";

inline version40::c_generalHeader header() {
  version40::c_generalHeader made;
  EXPECT_EQ(read(made, general_header), 0);
  return made;
}

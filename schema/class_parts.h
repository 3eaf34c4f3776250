#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "binding/choice.h"
#include "binding/description.h"
#include "binding/storage.h"
#include "level1bProduct/enumeration.h"
#include "level1bProduct/value_sets.h"
#include "lmx/datetime.h"
#include "lmx/reader.h"
#include "lmx/writer.h"

// What every annotation class is made of, for the generated headers.

// The annotation classes are part of the plug-in's interface.
#define ANNOTATION_API __attribute__((visibility("default")))

namespace version34 {
using namespace level1bProduct;
}
namespace version35 {
using namespace level1bProduct;
}
namespace version40 {
using namespace level1bProduct;
}

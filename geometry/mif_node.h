#pragma once

#include <cstdint>

#include "gridkit/dictionary.h"
#include "gridkit/report.h"

// Registers the design in the dictionary and encodes the object by it. The outs, which become the
// host's, are the object's encoded form and its size, the dictionary's text form and the design's
// name in it. Each is set as soon as it is made and stays set when a later step fails; the failure
// is reported through `err`, or printed when `err` is null. What `err` held before is dropped.
void tsx_CreateMIFNode(const void* object, gkd_Dictionary* open_dictionary, gkd_Design* design,
                       void** data, std::int32_t* size, char** dictionary, char** typeName,
                       gke_Report** err);

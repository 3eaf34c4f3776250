#pragma once

#include <optional>
#include <string>

#include "gridkit/product.h"

// The sensor model that the plug-in publishes for an annotation, ":RADAR_Generic_v2.2" with its
// dictionary, made by the plug-in's own code but without the image files, of which the model needs
// none. Nothing where the annotation has a fault that is not passed over (schema/lenience.h), lacks
// a text that the model needs, or describes an image on a map. Throws gridkit::Error where the
// plug-in refuses to make the model.
std::optional<gridkit::NonStandardData> sensor_model_record(const std::string& path);

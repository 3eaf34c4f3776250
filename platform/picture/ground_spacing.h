#pragma once

#include "gridkit/product.h"
#include "picture/multilook.h"

// How far the pixels of a product lie apart on the ground, from what its format publishes (see
// Placement): the mean over the middle half of its middle line and middle column, at the scene's
// average height. Throws gridkit::Error for a product that cannot be placed.
GroundSpacing ground_spacing(const gridkit::Product& product, PictureSize image);

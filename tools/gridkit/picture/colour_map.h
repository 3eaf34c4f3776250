#pragma once

#include <vector>

#include "gridkit/indexed_png.h"

// Colours of the numbers that picture/stretch.h gives: 0 is black and wholly
// transparent, for no data; 1 to 255 are opaque.

// From black to white in even steps.
std::vector<gridkit::Colour> grey_map();

// Around the circle of phases.
std::vector<gridkit::Colour> cyclic_map();

// The colour of an angle given in turns; whole turns change nothing. The colours lie on a circle in
// the OKLab space (perceived lightness, green to red, blue to yellow), so that equal steps of the
// angle look equally large everywhere and the ends meet. The circle is tilted, the yellow side up,
// because a change of the hue alone is hard to see in fine detail. Its radius is the largest that
// stays within what a screen shows.
gridkit::Colour cyclic_colour(double turns);

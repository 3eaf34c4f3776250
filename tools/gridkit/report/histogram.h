#pragma once

#include "tools/gridkit/picture/quicklook.h"
#include "tools/gridkit/report/svg_plot.h"

namespace report {

// The distribution of all pixels of a layer, from the counts of its quicklook: magnitudes up to the
// value that 99.5 % of them do not exceed, phases over the whole circle. Without a curve
// where every magnitude is 0.
Plot histogram(const Quicklook& quicklook);

}  // namespace report

#pragma once

namespace report {

// A place in a drawing, in its units, y down.
struct Place {
  double x = 0;
  double y = 0;
};

// A part of a drawing.
struct Box {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
};

}  // namespace report

#include "tools/gridkit/report/svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "tools/gridkit/report/html.h"

namespace report {

namespace {

// The drawing, in the units of its view box, which are about a screen's pixels.
constexpr double width = 460;
constexpr double height = 270;
constexpr double left = 58;
constexpr double right = 14;
constexpr double top = 10;
constexpr double bottom = 44;
constexpr int colour_count = 6;

struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  void add(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  double length() const { return high - low; }
};

// Values near the ends of what a double can hold cannot be scaled.
bool is_drawable(const PlotPoint& point) {
  constexpr double largest = 1e300;
  return std::abs(point.x) <= largest && std::abs(point.y) <= largest;
}

// A range that a drawing can divide by: of some length, and a little wider than its values.
Range widened(Range range, double least, double margin) {
  const double middle = (range.low + range.high) / 2;
  constexpr double shortest = 1e-200;
  const double smallest = std::max({least, std::abs(middle) * 1e-9, shortest});
  if (range.length() < smallest) range = {middle - smallest / 2, middle + smallest / 2};
  const double added = range.length() * margin;
  return {range.low - added, range.high + added};
}

// From values to places in the drawing.
struct Frame {
  Range x;
  Range y;

  double place_x(double value) const {
    return left + (value - x.low) / x.length() * (width - left - right);
  }
  double place_y(double value) const {
    return height - bottom - (value - y.low) / y.length() * (height - top - bottom);
  }
};

std::string place(double x, double y) {
  return fixed(x, 1) + ' ' + fixed(y, 1);
}

std::string text_at(double x, double y, const char* anchor, const std::string& words) {
  return "<text x=\"" + fixed(x, 1) + "\" y=\"" + fixed(y, 1) + "\" text-anchor=\"" + anchor +
         "\">" + escape(words) + "</text>";
}

std::string axes(const Frame& frame, const Plot& plot) {
  constexpr int x_count = 6;
  constexpr int y_count = 5;
  std::string grid;
  std::string labels;
  const RoundStep across = round_step(frame.x.length(), x_count);
  for (const double value : across.multiples(frame.x.low, frame.x.high)) {
    const double x = frame.place_x(value);
    grid += "M" + place(x, top) + "V" + fixed(height - bottom, 1);
    labels += text_at(x, height - bottom + 15, "middle", fixed(value, across.decimals));
  }
  const RoundStep up = round_step(frame.y.length(), y_count);
  for (const double value : up.multiples(frame.y.low, frame.y.high)) {
    const double y = frame.place_y(value);
    grid += "M" + place(left, y) + "H" + fixed(width - right, 1);
    labels += text_at(left - 6, y + 3.5, "end", fixed(value, up.decimals));
  }
  labels += text_at((left + width - right) / 2, height - 8, "middle", plot.x_label);
  labels += "<text transform=\"translate(12 " + fixed((top + height - bottom) / 2, 1) +
            ") rotate(-90)\" text-anchor=\"middle\">" + escape(plot.y_label) + "</text>";
  return "<path class=\"grid\" d=\"" + grid + "\"/>" + labels;
}

std::string curve(const Frame& frame, const Series& series, std::size_t index, bool filled) {
  std::string path;
  std::string dots;
  bool is_down = false;
  double first_x = 0;
  double last_x = 0;
  const std::string base = fixed(frame.place_y(frame.y.low), 1);
  for (const PlotPoint& point : series.points) {
    if (!is_drawable(point)) {
      if (filled && is_down) path += "V" + base + "H" + fixed(first_x, 1) + "Z";
      is_down = false;
      continue;
    }
    const double x = frame.place_x(point.x);
    const double y = frame.place_y(point.y);
    if (!is_down) first_x = x;
    path += (is_down ? "L" : "M") + place(x, y);
    last_x = x;
    is_down = true;
    constexpr std::size_t most_dots = 30;
    if (!filled && series.points.size() <= most_dots) {
      dots += "<circle cx=\"" + fixed(x, 1) + "\" cy=\"" + fixed(y, 1) + "\" r=\"2.2\"/>";
    }
  }
  if (filled && is_down && last_x >= first_x) path += "V" + base + "H" + fixed(first_x, 1) + "Z";
  const std::string colour = "c" + std::to_string(index % colour_count);
  return "<g class=\"curve " + colour + (filled ? " filled" : "") + "\"><path d=\"" + path +
         "\"/>" + dots + "</g>";
}

std::string legend(const Plot& plot) {
  if (plot.series.size() < 2) return {};
  std::string items;
  for (std::size_t i = 0; i < plot.series.size(); ++i) {
    items += "<li class=\"c" + std::to_string(i % colour_count) + "\">" +
             escape(plot.series[i].name) + "</li>";
  }
  return "<ul class=\"legend\">" + items + "</ul>";
}

}  // namespace

std::vector<double> RoundStep::multiples(double low, double high) const {
  constexpr std::size_t most = 400;
  constexpr double tolerance = 1e-9;
  std::vector<double> values;
  const double first = std::ceil(low / size - tolerance);
  const double last = std::floor(high / size + tolerance);
  for (std::size_t i = 0; i < most; ++i) {
    const double multiple = first + static_cast<double>(i);
    if (!(multiple <= last)) break;
    values.push_back(multiple * size);
  }
  return values;
}

RoundStep round_step(double length, int parts) {
  const double rough = length / parts;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  const double share = rough / power;
  const double size = power * (share < 1.5 ? 1 : share < 3.5 ? 2 : share < 7.5 ? 5 : 10);
  // The rounding of a step just below a power of ten must not cost a digit.
  return {size, std::max(0, static_cast<int>(-std::floor(std::log10(size) + 1e-9)))};
}

std::string draw(const Plot& plot) {
  const std::string caption = "<figcaption>" + escape(plot.title) + "</figcaption>";
  Frame frame;
  for (const Series& series : plot.series) {
    for (const PlotPoint& point : series.points) {
      if (!is_drawable(point)) continue;
      frame.x.add(point.x);
      frame.y.add(point.y);
    }
  }
  if (frame.x.low > frame.x.high) {
    return "<figure class=\"plot\">" + caption + "<p class=\"none\">Nothing to draw.</p></figure>";
  }
  if (plot.filled) frame.y.low = std::min(frame.y.low, 0.0);
  frame.x = widened(frame.x, frame.x.length() > 0 ? 0 : 1, 0);
  const double floor = frame.y.low;
  frame.y = widened(frame.y, std::max(plot.least_y_range, frame.y.length() > 0 ? 0.0 : 1.0), 0.06);
  if (plot.filled) frame.y.low = floor;
  std::string curves;
  for (std::size_t i = 0; i < plot.series.size(); ++i) {
    curves += curve(frame, plot.series[i], i, plot.filled);
  }
  return "<figure class=\"plot\">" + caption + "<svg viewBox=\"0 0 " + fixed(width, 0) + ' ' +
         fixed(height, 0) + "\" role=\"img\" aria-label=\"" + escape(plot.title) + "\">" +
         axes(frame, plot) + curves + "</svg>" + legend(plot) + "</figure>";
}

}  // namespace report

#include "picture/multilook.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace {

constexpr float no_data = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t pixel_values = 65536;

std::int32_t share(std::int64_t index, std::int32_t of, std::int32_t cells) {
  return static_cast<std::int32_t>(index * cells / of);
}

// Cosine and sine of every 16-bit phase, side by side.
std::vector<float> all_phasors() {
  std::vector<float> phasors(2 * pixel_values);
  for (std::size_t i = 0; i < pixel_values; ++i) {
    const double phase = static_cast<std::int16_t>(i) * std::numbers::pi / 32768;
    phasors[2 * i] = static_cast<float>(std::cos(phase));
    phasors[2 * i + 1] = static_cast<float>(std::sin(phase));
  }
  return phasors;
}

}  // namespace

PictureSize fitting_size(PictureSize image, GroundSpacing spacing, std::int32_t longest) {
  const double width = image.width * spacing.sample;
  const double height = image.height * spacing.line;
  const double pixel = std::max({width / longest, height / longest, spacing.sample, spacing.line});
  const auto count = [&](double length, std::int32_t most) {
    const auto pixels = static_cast<std::int32_t>(std::lround(length / pixel));
    return std::clamp(pixels, 1, std::min(most, longest));
  };
  return {count(width, image.width), count(height, image.height)};
}

Multilook::Multilook(PixelMeaning meaning, PictureSize image, PictureSize picture)
    : meaning_(meaning), image_(image) {
  picture_.size = picture;
  const auto width = static_cast<std::size_t>(picture.width);
  picture_.values.reserve(width * static_cast<std::size_t>(picture.height));
  // The first pixel with floor(s * width / n) = c is the least whole s that is not below c * n /
  // width.
  for (std::int64_t c = 0; c <= picture.width; ++c) {
    column_starts_.push_back(
        static_cast<std::int32_t>((c * image.width + picture.width - 1) / picture.width));
  }
  if (meaning == PixelMeaning::magnitude) {
    intensities_.resize(width);
  } else if (meaning == PixelMeaning::power) {
    powers_.resize(width);
  } else {
    cosines_.resize(width);
    sines_.resize(width);
    phasors_ = all_phasors();
  }
}

std::int32_t Multilook::row_of(std::int32_t line) const {
  return share(line, image_.height, picture_.size.height);
}

void Multilook::add(std::span<const std::uint16_t> pixels, std::int32_t lines) {
  add_lines(pixels, lines);
}

void Multilook::add(std::span<const float> powers, std::int32_t lines) {
  add_lines(powers, lines);
}

template <class Pixel>
void Multilook::add_lines(std::span<const Pixel> pixels, std::int32_t lines) {
  const auto width = static_cast<std::size_t>(image_.width);
  for (std::int32_t i = 0; i < lines; ++i) {
    add_line(pixels.subspan(static_cast<std::size_t>(i) * width, width));
    ++next_line_;
    if (next_line_ == image_.height || row_of(next_line_) != row_of(next_line_ - 1)) {
      complete_line();
    }
  }
}

void Multilook::add_line(std::span<const std::uint16_t> pixels) {
  const auto columns = static_cast<std::size_t>(picture_.size.width);
  for (std::size_t c = 0; c < columns; ++c) {
    const auto from = static_cast<std::size_t>(column_starts_[c]);
    const auto until = static_cast<std::size_t>(column_starts_[c + 1]);
    if (meaning_ == PixelMeaning::magnitude) {
      std::uint64_t sum = 0;
      for (std::size_t s = from; s < until; ++s) sum += std::uint64_t{pixels[s]} * pixels[s];
      intensities_[c] += sum;
      continue;
    }
    double cosine = 0;
    double sine = 0;
    for (std::size_t s = from; s < until; ++s) {
      cosine += phasors_[std::size_t{2} * pixels[s]];
      sine += phasors_[std::size_t{2} * pixels[s] + 1];
    }
    cosines_[c] += cosine;
    sines_[c] += sine;
  }
}

void Multilook::add_line(std::span<const float> powers) {
  for (std::size_t c = 0; c < powers_.size(); ++c) {
    const auto from = static_cast<std::size_t>(column_starts_[c]);
    const auto until = static_cast<std::size_t>(column_starts_[c + 1]);
    double sum = 0;
    for (std::size_t s = from; s < until; ++s) sum += static_cast<double>(powers[s]);
    powers_[c] += sum;
  }
}

void Multilook::complete_line() {
  const std::int32_t row = row_of(next_line_ - 1);
  // Lines of the image that fell into the row.
  std::int32_t lines = 1;
  while (lines < next_line_ && row_of(next_line_ - 1 - lines) == row) ++lines;
  for (std::size_t c = 0; c + 1 < column_starts_.size(); ++c) {
    const double count = double{1} * lines * (column_starts_[c + 1] - column_starts_[c]);
    if (meaning_ == PixelMeaning::power) {
      const double mean = powers_[c] / count;
      picture_.values.push_back(mean == 0 ? no_data : static_cast<float>(mean));
    } else if (meaning_ == PixelMeaning::magnitude) {
      const double mean = static_cast<double>(intensities_[c]) / count;
      picture_.values.push_back(mean > 0 ? static_cast<float>(std::sqrt(mean)) : no_data);
    } else {
      picture_.values.push_back(static_cast<float>(std::atan2(sines_[c], cosines_[c])));
    }
  }
  std::fill(intensities_.begin(), intensities_.end(), 0);
  std::fill(powers_.begin(), powers_.end(), 0);
  std::fill(cosines_.begin(), cosines_.end(), 0);
  std::fill(sines_.begin(), sines_.end(), 0);
}

FloatPicture Multilook::finish(std::span<const gridkit::LineRange> missing) {
  for (const gridkit::LineRange& range : missing) {
    const auto from = static_cast<std::ptrdiff_t>(row_of(range.first)) * picture_.size.width;
    const auto until = static_cast<std::ptrdiff_t>(row_of(range.last) + 1) * picture_.size.width;
    std::fill(picture_.values.begin() + from, picture_.values.begin() + until, no_data);
  }
  return std::move(picture_);
}

#include "gridkit/samples.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "gridkit/samples/companion_library.h"
#include "gridkit/samples/conversion_forms.h"
#include "gridkit/samples/facts_from.h"
#include "gridkit/services/open_scope.h"

namespace gridkit {

namespace {

gkc_Error no_error() {
  gkc_Error error;  // its texts are not cleared whole: they are long, and reads are many
  error.size = sizeof error;
  error.code = gkc_NoError;
  error.reserved = 0;
  error.text_line = 0;
  error.image_line = -1;
  error.path[0] = '\0';
  error.element[0] = '\0';
  error.message[0] = '\0';
  return error;
}

NativeType native_type(const gkc_Image& image) {
  switch (image.sample_type) {
    case gkc_ComplexInt16:
      return NativeType::complex_int16;
    case gkc_ComplexHalf:
      return NativeType::complex_half;
    case gkc_Uint16:
      return NativeType::uint16;
    default:
      throw Error(std::string(image.file) + ": the companion gave a type of samples, " +
                  std::to_string(image.sample_type) + ", that this host does not know");
  }
}

SampleImage image_of(const gkc_Image& image) {
  SampleImage described;
  described.name = image.name;
  described.polarisation = image.polarisation;
  described.file = image.file;
  described.lines = image.lines;
  described.samples = image.samples;
  described.type = native_type(image);
  if (image.burst > 0) described.burst = image.burst;
  described.first_line_utc = image.first_line_utc;
  described.calibration_factor = image.calibration_factor;
  if (image.magnitude_layer >= 0) described.magnitude_layer = image.magnitude_layer;
  if (image.phase_layer >= 0) described.phase_layer = image.phase_layer;
  described.image_file = image.image_file;
  if (image.magnitude_layer_name != nullptr) {
    described.magnitude_layer_name = image.magnitude_layer_name;
  }
  if (image.phase_layer_name != nullptr) described.phase_layer_name = image.phase_layer_name;
  return described;
}

// Whether `count` places from `first` on, `step` apart, lie below `size`.
bool lies_inside(std::int64_t first, std::int64_t count, std::int64_t step, std::int64_t size) {
  return first >= 0 && count >= 1 && step >= 1 && first < size &&
         count - 1 <= (size - 1 - first) / step;
}

void check_inside(const SampleImage& image, const SampleWindow& window) {
  if (lies_inside(window.line, window.lines, window.line_step, image.lines) &&
      lies_inside(window.sample, window.samples, window.sample_step, image.samples)) {
    return;
  }
  gkc_Error error = no_error();
  error.code = gkc_WrongUse;
  const std::string message =
      image.name + ": the window of " + std::to_string(window.lines) + " lines x " +
      std::to_string(window.samples) + " samples at line " + std::to_string(window.line) +
      ", sample " + std::to_string(window.sample) + ", in steps of " +
      std::to_string(window.line_step) + " and " + std::to_string(window.sample_step) +
      ", does not lie in the image of " + std::to_string(image.lines) + " lines x " +
      std::to_string(image.samples) + " samples";
  message.copy(error.message, sizeof error.message - 1);
  error.message[std::min(message.size(), sizeof error.message - 1)] = '\0';
  throw SampleError(error, {});
}

// So many samples at once go from the companion to a conversion: little enough for the cache.
constexpr std::int64_t samples_at_once = std::int64_t{16} * 1024;

}  // namespace

SampleError::SampleError(const gkc_Error& error, const Delivered& delivered)
    : Error(error.message),
      code_(static_cast<gkc_ErrorCode>(error.code)),
      path_(error.path),
      element_(error.element),
      text_line_(error.text_line),
      image_line_(error.image_line),
      delivered_(delivered) {}

std::filesystem::path companion_path(const Plugin& plugin) {
  return plugin.library().parent_path() / "companions" / plugin.library().filename();
}

// The product is closed before its companion may be unloaded.
struct Samples::Open {
  std::shared_ptr<const gkc_Companion> companion;
  std::string path;
  gkc_Product* product = nullptr;
  std::vector<SampleImage> images;
  std::vector<std::string> passed_over;

  Open(std::shared_ptr<const gkc_Companion> table, std::string description, bool lenient,
       bool without_images = false)
      : companion(std::move(table)), path(std::move(description)) {
    const OpenScope scope(path);
    const gkc_OpenOptions options{sizeof(gkc_OpenOptions), without_images ? 1 : 0, lenient ? 1 : 0};
    gkc_Error error = no_error();
    if (companion->open(path.c_str(), &options, &product, &error) != gkc_NoError) {
      throw SampleError(error, {});
    }
  }
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;
  ~Open() { companion->close(product); }

  // Nothing by a companion that does not tell them.
  std::optional<ProductFacts> facts() const {
    if (!GKC_HAS(companion, gkc_Companion, describe_product)) return std::nullopt;
    gkc_Error error = no_error();
    gkc_ProductFacts told{};
    told.size = sizeof told;
    if (companion->describe_product(product, &told, &error) != gkc_NoError) {
      throw SampleError(error, {});
    }
    return facts_from(told);
  }

  void describe() {
    for (std::int32_t i = 0; i < companion->image_count(product); ++i) {
      gkc_Error error = no_error();
      gkc_Image image{};
      image.size = sizeof image;
      if (companion->describe_image(product, i, &image, &error) != gkc_NoError) {
        throw SampleError(error, {});
      }
      images.push_back(image_of(image));
    }
  }

  // The grid's file is opened when it is first asked for, and no other folder's then either.
  FoundGrid geolocation_grid() const {
    if (!GKC_HAS(companion, gkc_Companion, describe_grid)) return {};
    const OpenScope scope(path);
    gkc_Error error = no_error();
    gkc_GeolocationGrid grid{};
    grid.size = sizeof grid;
    if (companion->describe_grid(product, &grid, &error) != gkc_NoError) {
      throw SampleError(error, {});
    }
    FoundGrid found;
    if (grid.warning != nullptr) found.warning = grid.warning;
    if (grid.points_along < 1 || grid.points == nullptr) return found;
    const auto along = static_cast<std::size_t>(grid.points_along);
    const auto across = static_cast<std::size_t>(grid.points_across);
    std::vector<gkc_GridPoint> points(along * across);
    const auto* from = reinterpret_cast<const std::byte*>(grid.points);
    for (std::size_t i = 0; i < points.size(); ++i) {
      std::memcpy(&points[i], from + i * grid.point_size,
                  std::min(grid.point_size, sizeof points[i]));
    }
    found.grid = std::make_shared<const GeolocationGrid>(along, across, std::move(points),
                                                         grid.range_delay, grid.azimuth_shift);
    return found;
  }

  void list_remarks() {
    if (!GKC_HAS(companion, gkc_Companion, describe_remark)) return;
    for (std::int32_t i = 0; i < companion->remark_count(product); ++i) {
      gkc_Error remark = no_error();
      if (companion->describe_remark(product, i, &remark) != gkc_NoError) {
        throw SampleError(remark, {});
      }
      passed_over.emplace_back(remark.message);
    }
  }

  // The companion's own read; how far it came, and in `error` why no farther.
  Delivered read(std::size_t image, const SampleWindow& window, void* data,
                 std::int64_t line_stride, std::int64_t sample_stride, gkc_Error& error) const {
    const gkc_Window wanted{sizeof(gkc_Window), window.line,      window.sample,      window.lines,
                            window.samples,     window.line_step, window.sample_step, data,
                            line_stride,        sample_stride};
    gkc_Delivered came{sizeof(gkc_Delivered), 0, 0};
    error.code = companion->read(product, static_cast<std::int32_t>(image), &wanted, &came, &error);
    return {came.lines, came.samples};
  }
};

Samples::Samples(std::shared_ptr<const Open> open) : open_(std::move(open)) {}

Samples Samples::open(const Plugin& plugin, const std::string& path) {
  return open(plugin, path, false);
}

Samples Samples::open_leniently(const Plugin& plugin, const std::string& path) {
  return open(plugin, path, true);
}

Samples Samples::open(const Plugin& plugin, const std::string& path, bool lenient) {
  const auto opened = std::make_shared<Open>(load_companion(companion_path(plugin)), path, lenient);
  opened->describe();
  opened->list_remarks();
  return Samples(opened);
}

const std::vector<std::string>& Samples::passed_over() const {
  return open_->passed_over;
}

const std::vector<SampleImage>& Samples::images() const {
  return open_->images;
}

std::size_t Samples::find(const std::string& name) const {
  const auto& all = images();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const SampleImage& image) { return image.name == name; });
  if (found != all.end()) return static_cast<std::size_t>(found - all.begin());
  std::string names;
  for (const SampleImage& image : all) names += (names.empty() ? "" : ", ") + image.name;
  throw Error(open_->path + ": no image " + name + "; there are " + names);
}

namespace {

// Converts windows on their way to the caller's memory.
class ConvertingReader {
 public:
  ConvertingReader(const SampleImage& image, const Conversion& conversion,
                   const SampleTarget& target, const SampleWindow& window)
      : converter_(conversion, image.type, window),
        native_bytes_(static_cast<std::int64_t>(form_bytes(SampleForm::native, image.type))),
        form_bytes_(static_cast<std::int64_t>(form_bytes(conversion.form, image.type))),
        target_(target),
        native_(static_cast<std::size_t>(samples_at_once * native_bytes_)) {
    if (target_.sample_stride != form_bytes_) {
      converted_.resize(static_cast<std::size_t>(samples_at_once * form_bytes_));
    }
  }

  // Reads a window part by part. `read_native(part, data)` reads a part without gaps and gives how
  // far it came; so does this.
  template <class ReadNative>
  Delivered read(const SampleWindow& window, ReadNative read_native) {
    const std::int64_t most_lines = std::max<std::int64_t>(samples_at_once / window.samples, 1);
    for (std::int64_t line = 0; line < window.lines; line += most_lines) {
      for (std::int64_t sample = 0; sample < window.samples; sample += samples_at_once) {
        const SampleWindow part{window.line + line * window.line_step,
                                window.sample + sample * window.sample_step,
                                std::min(window.lines - line, most_lines),
                                std::min(window.samples - sample, samples_at_once),
                                window.line_step,
                                window.sample_step};
        const Delivered came = read_native(part, native_.data(), part.samples * native_bytes_);
        for (std::int64_t l = 0; l < came.lines; ++l) hand_on(line, l, sample, part.samples, part);
        if (came.lines == part.lines) continue;
        if (came.samples > 0) hand_on(line, came.lines, sample, came.samples, part);
        return {line + came.lines, sample + came.samples};
      }
    }
    return {window.lines, 0};
  }

 private:
  void hand_on(std::int64_t first_line, std::int64_t line, std::int64_t sample, std::int64_t count,
               const SampleWindow& part) {
    const std::byte* from = native_.data() + line * part.samples * native_bytes_;
    std::byte* to = static_cast<std::byte*>(target_.data) +
                    (first_line + line) * target_.line_stride + sample * target_.sample_stride;
    const auto samples = static_cast<std::size_t>(count);
    const LinePart place = {part.line + line * part.line_step, static_cast<std::size_t>(sample)};
    if (converted_.empty()) {
      converter_.convert(place, from, to, samples);
      return;
    }
    converter_.convert(place, from, converted_.data(), samples);
    for (std::int64_t k = 0; k < count; ++k) {
      std::memcpy(to + k * target_.sample_stride, converted_.data() + k * form_bytes_,
                  static_cast<std::size_t>(form_bytes_));
    }
  }

  Converter converter_;
  std::int64_t native_bytes_;
  std::int64_t form_bytes_;
  SampleTarget target_;
  std::vector<std::byte> native_;
  std::vector<std::byte> converted_;  // for targets with gaps between their samples
};

SampleTarget without_gaps(const SampleTarget& target, const SampleWindow& window,
                          std::size_t bytes) {
  SampleTarget filled = target;
  if (filled.sample_stride == 0) filled.sample_stride = static_cast<std::int64_t>(bytes);
  if (filled.line_stride == 0) filled.line_stride = filled.sample_stride * window.samples;
  return filled;
}

}  // namespace

void Samples::check_window(std::size_t number, const SampleWindow& window) const {
  check_inside(images().at(number), window);
}

void Samples::read(std::size_t number, const SampleWindow& window, const Conversion& conversion,
                   const SampleTarget& given) const {
  const SampleImage& image = images().at(number);
  check_inside(image, window);
  const std::string refusal = refusal_of_form(conversion.form, image.type);
  if (!refusal.empty()) throw Error(image.file + ": " + refusal);
  if (conversion.radiometry != nullptr && (conversion.radiometry->lines() != image.lines ||
                                           conversion.radiometry->samples() != image.samples)) {
    throw Error(image.file + ": the radiometry is that of another image");
  }
  const SampleTarget target = without_gaps(given, window, form_bytes(conversion.form, image.type));
  gkc_Error error = no_error();
  Delivered came;
  if (conversion.form == SampleForm::native) {
    came =
        open_->read(number, window, target.data, target.line_stride, target.sample_stride, error);
  } else {
    ConvertingReader reader(image, conversion, target, window);
    came = reader.read(window, [&](const SampleWindow& part, void* data, std::int64_t line_bytes) {
      return open_->read(number, part, data, line_bytes,
                         static_cast<std::int64_t>(form_bytes(SampleForm::native, image.type)),
                         error);
    });
  }
  if (error.code != gkc_NoError) throw SampleError(error, came);
}

FoundGrid Samples::geolocation_grid() const {
  return open_->geolocation_grid();
}

std::optional<ProductFacts> facts_of(const Product& product) {
  try {
    return product.samples().open_->facts();
  } catch (const Error&) {
    return find_product_facts(product.plugin(), product.path());
  }
}

std::optional<ProductFacts> find_product_facts(const Plugin& plugin, const std::string& path) try {
  return Samples::Open(load_companion(companion_path(plugin)), path, true, true).facts();
} catch (const Error&) {
  return std::nullopt;
}

FoundGrid Samples::find_grid(const Plugin& plugin, const std::string& path) {
  const std::filesystem::path library = companion_path(plugin);
  std::error_code ignored;
  if (!std::filesystem::exists(library, ignored)) return {};
  const auto companion = load_companion(library);
  // An older companion knows no product without images.
  if (!GKC_HAS(companion, gkc_Companion, describe_grid)) return {};
  return Open(companion, path, true, true).geolocation_grid();
}

FoundGrid find_geolocation_grid(const Plugin& plugin, const std::string& path) try {
  return Samples::find_grid(plugin, path);
} catch (const Error& error) {
  return {nullptr, error.what()};
}

std::vector<gkc_ValidSamples> Samples::read_valid_samples(std::size_t number,
                                                          std::int64_t first_line,
                                                          std::int64_t lines) const {
  const SampleImage& image = images().at(number);
  const bool is_inside = first_line >= 0 && lines >= 0 && lines <= image.lines - first_line;
  std::vector<gkc_ValidSamples> valid(is_inside ? static_cast<std::size_t>(lines) : 0);
  gkc_Error error = no_error();
  gkc_Delivered came{sizeof(gkc_Delivered), 0, 0};
  error.code =
      open_->companion->read_valid_samples(open_->product, static_cast<std::int32_t>(number),
                                           first_line, lines, valid.data(), &came, &error);
  if (error.code != gkc_NoError) throw SampleError(error, {came.lines, 0});
  return valid;
}

ImageNoise Samples::noise(std::size_t number) const {
  const SampleImage& image = images().at(number);
  const auto& companion = open_->companion;
  if (!GKC_HAS(companion, gkc_Companion, describe_noise)) {
    throw Error(image.file + ": the plug-in's companion cannot tell the noise");
  }
  gkc_Error error = no_error();
  gkc_Noise noise{};
  noise.size = sizeof noise;
  if (companion->describe_noise(open_->product, static_cast<std::int32_t>(number), &noise,
                                &error) != gkc_NoError) {
    throw SampleError(error, {});
  }
  ImageNoise result;
  result.factor = noise.factor;
  result.earliest_line = noise.earliest_line;
  result.latest_line = noise.latest_line;
  const auto* place = reinterpret_cast<const std::byte*>(noise.polynomials);
  for (std::int32_t i = 0; i < noise.count; ++i, place += noise.polynomial_size) {
    const auto& told = *reinterpret_cast<const gkc_NoisePolynomial*>(place);
    if (result.records.empty() || result.records.back().azimuth_time != told.azimuth_time) {
      result.records.push_back({told.azimuth_time, {}});
    }
    const double* terms = noise.coefficients + told.first_coefficient;
    result.records.back().polynomials.push_back({told.range_time_min,
                                                 told.range_time_max,
                                                 told.reference_time,
                                                 {terms, terms + told.coefficients}});
  }
  return result;
}

}  // namespace gridkit

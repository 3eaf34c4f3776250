#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gridkit/companion.h"
#include "gridkit/error.h"
#include "gridkit/export.h"
#include "gridkit/geolocation_grid.h"
#include "gridkit/plugin.h"
#include "gridkit/product_facts.h"
#include "gridkit/radiometry.h"

// Samples of images as they are, and what they are converted to: any window, into the caller's
// memory, on any number of threads. They come from the plug-in's companion (gridkit/companion.h).

namespace gridkit {

// A window of an image, which it lies in: `lines` lines of `samples` samples each, `line_step` and
// `sample_step` apart. Counted from 0.
struct SampleWindow {
  std::int64_t line = 0;
  std::int64_t sample = 0;
  std::int64_t lines = 0;
  std::int64_t samples = 0;
  std::int64_t line_step = 1;
  std::int64_t sample_step = 1;
};

// How far a read came: lines of the window that are there whole, and samples of the line after
// them.
struct Delivered {
  std::int64_t lines = 0;
  std::int64_t samples = 0;
};

// A failure that a companion told, with the place that it is about.
class GRIDKIT_API SampleError : public Error {
 public:
  SampleError(const gkc_Error& error, const Delivered& delivered);

  gkc_ErrorCode code() const { return code_; }
  const std::string& path() const { return path_; }        // of the file, may be empty
  const std::string& element() const { return element_; }  // of the description, may be empty
  std::int64_t text_line() const { return text_line_; }    // of the description, from 1; 0: none
  std::int64_t image_line() const { return image_line_; }  // that did not come whole; -1: none
  const Delivered& delivered() const { return delivered_; }

  // The same failure, of a window that has so many more lines before.
  SampleError after_lines(std::int64_t lines) const {
    SampleError later = *this;
    later.delivered_.lines += lines;
    return later;
  }

 private:
  gkc_ErrorCode code_;
  std::string path_;
  std::string element_;
  std::int64_t text_line_;
  std::int64_t image_line_;
  Delivered delivered_;
};

// What samples are in their file.
enum class NativeType {
  complex_int16,  // pairs of 16-bit integers, I then Q
  complex_half,   // pairs of half-precision numbers, I then Q
  uint16          // detected amplitudes
};

struct SampleImage {
  std::string name;  // unique in its product, such as "HH", or "HH_B2" for a burst
  std::string polarisation;
  std::string file;
  std::int64_t lines = 0;
  std::int64_t samples = 0;
  NativeType type = NativeType::complex_int16;
  std::optional<std::int32_t> burst;  // its number in the file, from 1
  std::string first_line_utc;         // empty where it is not known
  double calibration_factor = 0;      // from powers to radar brightness; 0 where there is no one
  // Places in the plug-in's list of layers, of those that are made of exactly these samples: of
  // their moduli, and of their phases. Nothing where the plug-in supposes the file to lie
  // otherwise.
  std::optional<std::int32_t> magnitude_layer;
  std::optional<std::int32_t> phase_layer;
  std::string magnitude_layer_name;  // empty where there is no such layer
  std::string phase_layer_name;
  std::int32_t image_file = 0;  // number of the file in the product, from 0

  bool is_complex() const { return type != NativeType::uint16; }
};

// What a read gives for each sample. I and Q are the sample's parts; of a detected image the
// amplitude stands for their modulus.
enum class SampleForm {
  native,         // as NativeType says, in this machine's byte order: 4 or 2 bytes
  complex_float,  // I and Q as 32-bit floats; complex images only
  magnitude,      // sqrt(I^2 + Q^2), squares, sum and root as 32-bit floats
  phase,        // atan2(Q, I) in radians as a 32-bit float, of (0, 0) it is 0; complex images only
  power,        // factor * (I^2 + Q^2), computed in 64 bits, as a 32-bit float
  decibels,     // 10 log10 of that, minus infinity for 0, as a 32-bit float
  magnitude16,  // uint16_t: the modulus truncated, as plug-ins' magnitude layers have it
  phase16       // int16_t: 65536 make a turn, 0 on the axes, as plug-ins' phase layers have it
};

// Bytes of a sample in that form.
GRIDKIT_API std::size_t form_bytes(SampleForm form, NativeType type);

struct Conversion {
  SampleForm form = SampleForm::native;
  double factor = 1;  // of power and decibels: with the calibration factor they are radar
                      // brightness (beta nought), with 1 intensity
  // In place of the factor, of power and decibels: the backscatter of an image of that size. Of
  // values below 0 decibels are not-a-numbers.
  std::shared_ptr<const Radiometry> radiometry = nullptr;
};

// Where samples go: that of line l and sample s of the window to data + l * line_stride + s *
// sample_stride bytes. A stride of 0 stands for that of an array without gaps.
struct SampleTarget {
  void* data = nullptr;
  std::int64_t line_stride = 0;
  std::int64_t sample_stride = 0;
};

// Where a plug-in's companion would lie.
GRIDKIT_API std::filesystem::path companion_path(const Plugin& plugin);

// The samples of a product. Copies share the open product, which the last of them closes. All
// operations may be called on any number of threads at once; reads wait for nobody.
class GRIDKIT_API Samples {
 public:
  // Opens the product at that path through the companion of the plug-in. Throws Error where there
  // is no companion or it does not load, SampleError for what it tells of the product. As with
  // Plugin::open, no files outside the product's folder are opened.
  static Samples open(const Plugin& plugin, const std::string& path);

  // The same, over values of the product's description that are not what its format allows, where
  // no sample, place, time or factor is made of them. passed_over() tells them.
  static Samples open_leniently(const Plugin& plugin, const std::string& path);

  // What a lenient open passed over, one sentence each with file, line, element, what stands there
  // and what may.
  const std::vector<std::string>& passed_over() const;

  // In the product's order.
  const std::vector<SampleImage>& images() const;

  // The number of the image of that name. Throws Error that names those there are.
  std::size_t find(const std::string& name) const;

  // Throws SampleError with gkc_WrongUse for a window that does not lie in the image.
  void check_window(std::size_t image, const SampleWindow& window) const;

  // Reads a window of the image of that number. Throws Error where the image has no such form, and
  // SampleError: with gkc_WrongUse for a window outside the image, and where the file ends early or
  // cannot be read. What came before stays delivered, as the error tells, and the rest of the
  // target stays as it was. Memory: below 1 MiB.
  void read(std::size_t image, const SampleWindow& window, const Conversion& conversion,
            const SampleTarget& target) const;

  // The product's geolocation grid, read when it is first asked for. Throws SampleError where the
  // companion fails for another reason than the grid's own faults.
  FoundGrid geolocation_grid() const;

  // The samples marked as valid of lines of an image. Throws SampleError.
  std::vector<gkc_ValidSamples> read_valid_samples(std::size_t image, std::int64_t first_line,
                                                   std::int64_t lines) const;

  // The noise that the image's instrument adds, as the product tells it. Throws SampleError with
  // the reason where it tells none, Error where the companion cannot tell.
  ImageNoise noise(std::size_t image) const;

 private:
  friend std::optional<ProductFacts> facts_of(const Product& product);
  friend std::optional<ProductFacts> find_product_facts(const Plugin& plugin,
                                                        const std::string& path);
  friend FoundGrid find_geolocation_grid(const Plugin& plugin, const std::string& path);
  static FoundGrid find_grid(const Plugin& plugin, const std::string& path);

  struct Open;
  explicit Samples(std::shared_ptr<const Open> open);
  static Samples open(const Plugin& plugin, const std::string& path, bool lenient);

  std::shared_ptr<const Open> open_;
};

// How a long read is done.
struct ReadManner {
  std::size_t threads = 1;  // that read: the calling one alone, or so many beside it
  // Told lines that came, in order, on the calling thread; false ends the read.
  std::function<bool(std::int64_t lines)> advance;
};

// Reads a window straight into the target on several threads. Gives how far it came and throws as
// Samples::read does; where `advance` ends it, throws Cancelled after `delivered` was set.
GRIDKIT_API void read_on_threads(const Samples& samples, std::size_t image,
                                 const SampleWindow& window, const Conversion& conversion,
                                 const SampleTarget& target, const ReadManner& manner,
                                 Delivered& delivered);

// As many threads as there are processors to use, at most 16.
GRIDKIT_API std::size_t usual_threads();

// Takes lines of a window in order, [lines][samples of the window] in a form, without gaps. Where
// not all came, `complete` is false and zeros stand for what did not.
using SampleLineSink =
    std::function<void(std::span<const std::byte> samples, std::int64_t lines, bool complete)>;

// Reads a window on every core and hands its lines to the sink on the calling thread. Gives the
// number of lines that came whole: fewer than the window has where the file ends early. Throws as
// Samples::read does for all else, and what the sink throws. Memory: 2 MiB and two lines a core.
GRIDKIT_API std::int64_t read_in_order(const Samples& samples, std::size_t image,
                                       const SampleWindow& window, const Conversion& conversion,
                                       const SampleLineSink& sink);

}  // namespace gridkit

#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The companion of a format plug-in: an optional second contract, beside the plug-in's exports. It
// hands out data as they are: samples of any window of an image, in their own type, into the
// caller's memory, on any number of threads. What is made of them is the host's business.
//
// A companion is a library of its own. That of the plug-in FOLDER/NAME.so is
// FOLDER/companions/NAME.so; hosts find it there, and it exports one function, gkc_GetCompanion,
// which gives its table. A plug-in without one works as before.
//
// Versions. Tables and structs only ever grow at their end, and each begins with its size as the
// side that made it knows it. What lies past the size that one side gives is not there for the
// other: a host looks whether the table is large enough for a function before it calls it
// (GKC_HAS), and a companion fills no more of a struct than its size allows. `version` changes when
// something of another meaning takes the place of what was there; hosts refuse a version that they
// do not know.
//
// Threads. Any number of threads may use one open product at once, except that gkc_Companion.close
// must be the last call. Nothing that reads or converts waits for another thread.
//
// Errors. Every function that can fail gives 0 for success, else a gkc_ErrorCode, and then tells
// what happened in the gkc_Error that the caller handed in (null: nobody asks). There is no other
// place where errors are kept. No exception leaves a companion.

#define GKC_VERSION 1

// Whether a table or struct, by the size at its begin, has the member.
#define GKC_HAS(object, type, member) \
  ((object)->size >= offsetof(type, member) + sizeof(((const type*)0)->member))

enum gkc_ErrorCode {
  gkc_NoError = 0,
  gkc_WrongUse = 1,        // arguments that mean nothing, such as a window outside the image
  gkc_NotRecognised = 2,   // no file of the format
  gkc_BadDescription = 3,  // the product's description is at fault; see element and text_line
  gkc_BadImage = 4,        // an image file is missing, or its own header is at fault
  gkc_CutShort = 5,        // an image file ends before the window does
  gkc_CannotRead = 6,      // the system refused to read
  gkc_NoMemory = 7,
  gkc_OurFault = 8  // should not happen: an error of the companion itself
};

// What happened. The caller makes it, sets `size`, and owns it; all else is filled in on failure.
// Texts end with a zero and are cut where they are longer.
typedef struct gkc_Error {
  size_t size;
  int32_t code;        // gkc_ErrorCode
  int32_t reserved;    // 0
  int64_t text_line;   // of the description, from 1; 0 where it is no matter of a line
  int64_t image_line;  // the first line of the image that did not come whole, from 0; else -1
  char path[1024];     // the file concerned, else empty
  char element[512];   // of the description, such as "/a/b", else empty
  char message[2048];  // all of it in one sentence, path and place included
} gkc_Error;

enum gkc_SampleType {
  gkc_ComplexInt16 = 1,  // pairs of int16_t, I then Q: 4 bytes
  gkc_ComplexHalf = 2,   // pairs of IEEE 754 half-precision numbers, I then Q: 4 bytes
  gkc_Uint16 = 3         // detected amplitudes, uint16_t: 2 bytes
};

// What there is to know of an image before any of it is read. The caller sets `size`. Texts live as
// long as the product.
typedef struct gkc_Image {
  size_t size;
  const char* name;            // unique in its product, such as "HH", or "HH_B2" for a burst
  const char* polarisation;    // such as "HH"
  const char* file;            // path of the image file
  int64_t lines;               // at least 1
  int64_t samples;             // of a line, at least 1
  int32_t sample_type;         // gkc_SampleType
  int32_t burst;               // number of the burst in its file, from 1; 0: the file is one image
  const char* first_line_utc;  // when the first line was seen, as in XML Schema's dateTime; empty
                               // where it is not known
  double calibration_factor;   // from powers to radar brightness; 0 where none is told or several
  int32_t magnitude_layer;     // place in the plug-in's list of layers, from 0, of the one that is
                               // made of the moduli of exactly these samples; -1: there is none,
                               // because the file does not lie as the plug-in supposes
  int32_t phase_layer;         // the same for their phases
  int32_t image_file;          // number of the image file in the product, from 0
  const char* magnitude_layer_name;  // the names of these layers; empty where there is none
  const char* phase_layer_name;
} gkc_Image;

// A window of an image and where it goes. Line `l` and sample `s` of the window, counted from 0,
// are line `first_line + l * line_step` and sample `first_sample + s * sample_step` of the image,
// and go to `target + l * line_stride + s * sample_stride` bytes. Strides may be anything, negative
// too; samples that are written must not overlap.
typedef struct gkc_Window {
  size_t size;
  int64_t first_line;
  int64_t first_sample;
  int64_t lines;        // at least 1
  int64_t samples;      // at least 1
  int64_t line_step;    // at least 1; 1 takes every line
  int64_t sample_step;  // at least 1
  void* target;
  int64_t line_stride;    // bytes
  int64_t sample_stride;  // bytes
} gkc_Window;

// How far a read came. The caller sets `size`.
typedef struct gkc_Delivered {
  size_t size;
  int64_t lines;    // of the window that are there whole, from its first on
  int64_t samples;  // of the line after them
} gkc_Delivered;

// For each line of an image the samples that the processor marked as valid, counted from 0.
// Where first > last the line has none.
typedef struct gkc_ValidSamples {
  int64_t first;
  int64_t last;
} gkc_ValidSamples;

// A point of a product's geolocation grid: where on Earth a place of the image really is. Members
// are only ever added at the end; gkc_GeolocationGrid.point_size tells where the next point begins.
typedef struct gkc_GridPoint {
  double azimuth_time;  // s since the midnight, UTC, that begins the day of the scene's annotated
                        // start: as the raster's lines count it
  double range_time;    // s, both ways: as the raster's samples count it
  double latitude;      // degrees, geodetic, WGS 84
  double longitude;     // degrees
  double height;        // m above the ellipsoid, of the terrain
  double incidence;     // degrees, between the sight and the ellipsoid's vertical
  double line;          // of the image, from 0; whole numbers are centres of pixels
  double sample;        // the same
} gkc_GridPoint;

// A product's geolocation grid. The caller sets `size`. Points and texts live as long as the
// product.
//
// The signal takes longer than light in a vacuum and the processor's clock has an error, so times
// of the raster are not those of the geometry. A place is seen at zero Doppler at the azimuth time
// (raster's - azimuth_shift) and at the range time (raster's - range_delay).
typedef struct gkc_GeolocationGrid {
  size_t size;
  int32_t points_along;         // in the direction of azimuth time; 0: there is no grid
  int32_t points_across;        // in the direction of range time
  size_t point_size;            // bytes from one point to the next
  const gkc_GridPoint* points;  // [points_along][points_across]; null where there are none
  double range_delay;           // s, both ways: the sum of all delays of the signal
  double azimuth_shift;         // s
  const char* warning;          // why the product's grid was not taken, in one sentence; empty
                                // where it was, or where the product has none
} gkc_GeolocationGrid;

// The noise of an image at one azimuth time, over a stretch of range times: a polynomial.
typedef struct gkc_NoisePolynomial {
  double azimuth_time;    // s since the midnight, UTC, that begins the day of the scene's annotated
                          // start: as the raster's lines count it
  double range_time_min;  // s, both ways: from where to where it holds
  double range_time_max;
  double reference_time;      // s, both ways
  int32_t first_coefficient;  // place in gkc_Noise.coefficients
  int32_t coefficients;       // at least 1: by rising powers of (range time - reference_time), in s
} gkc_NoisePolynomial;

// The noise of an image: factor * a polynomial's value is the power, on the scale of radar
// brightness, that the instrument itself adds. The caller sets `size`. Arrays live as long as the
// product.
typedef struct gkc_Noise {
  size_t size;
  double factor;                           // of the image's own polarisation
  int32_t count;                           // of polynomials, at least 1
  int32_t reserved;                        // 0
  size_t polynomial_size;                  // bytes from one polynomial to the next
  const gkc_NoisePolynomial* polynomials;  // by rising azimuth time; several may share one
  const double* coefficients;
  double earliest_line;  // azimuth times of the scene's outermost lines, as gkc_NoisePolynomial has
  double latest_line;    // them
} gkc_Noise;

// A place on Earth: degrees, geodetic, WGS 84.
typedef struct gkc_Place {
  double latitude;
  double longitude;
} gkc_Place;

// What an image is calibrated with: from powers of its samples to radar brightness.
typedef struct gkc_ImageFactors {
  const char* polarisation;
  const double* factors;  // that the description states for the image, one a beam; each value once
  int32_t count;
  int32_t reserved;  // 0
} gkc_ImageFactors;

// What there is to know of a product at a glance, as its description says it. Codes are the
// description's own; several of them, as a list may have, stand with ", " between. The caller sets
// `size`. Texts and arrays live as long as the product; a text that is not known is empty.
typedef struct gkc_ProductFacts {
  size_t size;
  const char* name;                 // of the product
  const char* variant;              // such as "SSC"
  const char* resolution_variant;   // such as "SE"
  const char* type;                 // such as "SSC______SM_S"
  const char* imaging_mode;         // such as "SM"
  const char* polarisation_mode;    // such as "SINGLE"
  const char* beam;                 // such as "strip_005"
  const char* look;                 // such as "RIGHT"
  const char* processing_software;  // that made the product
  const char* mission;              // such as "TSX-1"
  const char* pass;                 // such as "DESCENDING"
  const char* start;                // of the scene, UTC, as the description writes it
  const char* stop;
  const char* const* polarisations;
  const gkc_Place* corners;  // of the scene: begin and end of its first line, then of its last
  const gkc_ImageFactors* images;  // one entry an image file
  size_t image_size;               // bytes from one entry to the next
  int32_t polarisation_count;
  int32_t corner_count;
  int32_t image_count;
  int32_t is_on_map;  // not 0: lines run west to east, not across the flight
  int32_t orbit;
  int32_t relative_orbit;
  int32_t orbit_cycle;
  int32_t has_raster;  // not 0: what follows, up to the resolutions, is known
  int32_t lines;       // of the first image, which holds for every one
  int32_t samples;
  int32_t has_ground_spacing;  // not 0: samples are spaced in slant range
  int32_t reserved;            // 0
  double line_spacing;         // m
  double sample_spacing;       // m
  double ground_spacing_near;  // m, of samples in slant range, on the ground
  double ground_spacing_far;
  double azimuth_resolution;       // m
  double ground_range_resolution;  // m
  gkc_Place centre;
  double incidence;       // degrees, at the centre
  double average_height;  // m above the ellipsoid
} gkc_ProductFacts;

typedef struct gkc_Product gkc_Product;

typedef struct gkc_OpenOptions {
  size_t size;
  int32_t without_images;  // not 0: no image file is opened, and the product has no images
  int32_t lenient;  // not 0: values of the description that are not what its format allows are
                    // passed over where no sample, place, time or factor is made of them; see
                    // gkc_Companion.describe_remark
} gkc_OpenOptions;

typedef struct gkc_Companion {
  size_t size;
  int32_t version;   // GKC_VERSION
  int32_t reserved;  // 0

  // Opens a product by its description, and all of its image files. `options` may be null. On
  // success `*product` is the caller's to close, else null.
  int32_t (*open)(const char* path, const gkc_OpenOptions* options, gkc_Product** product,
                  gkc_Error* error);

  // Ends a product; null is nothing.
  void (*close)(gkc_Product* product);

  // How many images there are: those of the first file first, its bursts in their order.
  int32_t (*image_count)(const gkc_Product* product);

  // Describes the image of that number, from 0.
  int32_t (*describe_image)(const gkc_Product* product, int32_t image, gkc_Image* description,
                            gkc_Error* error);

  // Reads a window. All of it lies in the image, else nothing is read. Where the file ends early or
  // cannot be read, the lines and samples before stay delivered, as `*delivered` tells (null:
  // nobody asks), and the rest of the target stays as it was: no sample is made up.
  int32_t (*read)(const gkc_Product* product, int32_t image, const gkc_Window* window,
                  gkc_Delivered* delivered, gkc_Error* error);

  // The valid samples of `lines` lines. An image whose file has no such marks has all its samples
  // valid. On failure what came before stays, as `*delivered` tells of the lines.
  int32_t (*read_valid_samples)(const gkc_Product* product, int32_t image, int64_t first_line,
                                int64_t lines, gkc_ValidSamples* valid, gkc_Delivered* delivered,
                                gkc_Error* error);

  // Describes the product's geolocation grid, which is read when it is first asked for. A grid that
  // is missing or at fault is no failure: there is none then, and `warning` says why.
  int32_t (*describe_grid)(const gkc_Product* product, gkc_GeolocationGrid* grid, gkc_Error* error);

  // The noise of the image of that number. Fails with gkc_BadDescription where the description
  // tells none, or none that is sure to be this image's.
  int32_t (*describe_noise)(const gkc_Product* product, int32_t image, gkc_Noise* noise,
                            gkc_Error* error);

  // What a lenient open passed over: how many values, and each of them, from 0, told in the members
  // of a gkc_Error whose code is then gkc_BadDescription. The result is 0, or gkc_WrongUse for a
  // number that there is not.
  int32_t (*remark_count)(const gkc_Product* product);
  int32_t (*describe_remark)(const gkc_Product* product, int32_t remark, gkc_Error* told);

  // What there is to know of the product at a glance; also of one without images.
  int32_t (*describe_product)(const gkc_Product* product, gkc_ProductFacts* facts,
                              gkc_Error* error);
} gkc_Companion;

// What a companion exports. The table lives as long as the library is loaded.
typedef const gkc_Companion* (*gkc_GetCompanionFunction)(void);
#define GKC_ENTRY "gkc_GetCompanion"

#ifdef __cplusplus
}
#endif

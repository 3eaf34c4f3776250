#pragma once

// The host in C: what programs of any language need to open raster products and to read, calibrate
// and place them. One header, plain C99, also C++.
//
// What describes comes as JSON text of the published schemas; what measures goes as plain arrays
// into the caller's memory. There is no global setting, no errno and no state of a thread.
//
// Results. Every function that can fail gives gridkit_Done (0) or another gridkit_Code. A last
// argument `gridkit_error **error` (null: nobody asks) is set to null on success, and on failure to
// what happened: an object that is the caller's, to be freed by gridkit_error_free. A null argument
// that is not told to be allowed, a handle that was closed, an index that there is not, a struct
// whose size is wrong: all of these are gridkit_WrongUse, and then nothing else is done. No
// exception leaves the library, and no input ends the process.
//
// Threads. Every function may be called on any number of threads at once, with the same product
// too, gridkit_close included: what runs ends as it would have, and what is called later gets
// gridkit_WrongUse. Samples are read without a lock; a plug-in's own layers and data under one lock
// a product, which is the library's business. Callbacks are called on the calling thread.
//
// Ownership. Texts, arrays and structs that are handed in stay the caller's and are not needed
// after the call. What a function gives by an address (`char **json`) is the caller's, to be freed
// by gridkit_free, unless it says otherwise. Texts are UTF-8, except paths, which are bytes as the
// system has them, and end with a zero.
//
// Structs begin with their size. The caller sets `size = sizeof` of the struct and all else to 0,
// which stands for the default of every member, and then what is wanted otherwise; later versions
// only add members at the end, and a smaller or larger struct of another version is understood, a
// larger one as long as what is not known is 0.
//
// Counting. Lines, samples, images and layers are counted from 0; line 0, sample 0 is the centre of
// the first pixel. Latitudes and longitudes are degrees on WGS 84, heights metres above the
// ellipsoid, times seconds, lengths metres.

#include <stddef.h>
#include <stdint.h>

#include "gridkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- Versions ----

// Of this header. A library of the same major version, and before 1.0 of the same minor version,
// serves programs that were built with an older one.
#define GRIDKIT_VERSION_MAJOR 0
#define GRIDKIT_VERSION_MINOR 1
#define GRIDKIT_VERSION_PATCH 0
#define GRIDKIT_VERSION_NUMBER \
  (GRIDKIT_VERSION_MAJOR * 10000 + GRIDKIT_VERSION_MINOR * 100 + GRIDKIT_VERSION_PATCH)

// Of the library that runs: as GRIDKIT_VERSION_NUMBER, and as text such as "0.1.0", which lives as
// long as the library. Any thread.
GRIDKIT_API int32_t gridkit_version_number(void);
GRIDKIT_API const char* gridkit_version(void);

// ---- Errors ----

// What functions give. 1 to 8 mean what gkc_ErrorCode (gridkit/companion.h) does.
enum gridkit_Code {
  gridkit_Done = 0,
  gridkit_WrongUse = 1,        // arguments that mean nothing, such as a window outside the image
  gridkit_NotRecognised = 2,   // of none of the known formats
  gridkit_BadDescription = 3,  // the product's annotation is at fault; see path, element and line
  gridkit_BadImage = 4,        // an image file is missing, or its own header is at fault
  gridkit_CutShort = 5,        // an image file ends before the window does
  gridkit_CannotRead = 6,      // a file, a layer or data cannot be read
  gridkit_NoMemory = 7,
  gridkit_OurFault = 8,   // should not happen: an error of the library itself
  gridkit_NotFound = 9,   // the path leads to no product, or to several
  gridkit_NotThere = 10,  // the product has nothing of the kind: no samples, no such data, no place
  gridkit_NoPlugin = 11,  // no plug-in loads from the folders
  gridkit_Cancelled = 12  // the caller's own progress function said so
};

typedef struct gridkit_error gridkit_error;

// The parts of an error. Texts live as long as it does and are never null; a null error has the
// code gridkit_Done and empty parts. One error is for one thread at a time.
GRIDKIT_API int32_t gridkit_error_code(const gridkit_error* error);
GRIDKIT_API const char* gridkit_error_message(const gridkit_error* error);  // all of it, in words
GRIDKIT_API const char* gridkit_error_path(const gridkit_error* error);     // of the file, or empty
GRIDKIT_API const char* gridkit_error_element(const gridkit_error* error);  // "/a/b", or empty
GRIDKIT_API int64_t
gridkit_error_line(const gridkit_error* error);  // of the annotation, from 1; or 0
GRIDKIT_API int64_t gridkit_error_image_line(const gridkit_error* error);  // not whole; or -1

// Ends an error; null is nothing.
GRIDKIT_API void gridkit_error_free(gridkit_error* error);

// Frees what a function gave; null is nothing. Any thread.
GRIDKIT_API void gridkit_free(void* memory);

// ---- Options ----

// An answer that has a default.
enum gridkit_Choice { gridkit_Default = 0, gridkit_Yes = 1, gridkit_No = 2 };

// Tells how far a long call came, in parts of `all`; anything but 0 ends it with gridkit_Cancelled.
// It is called on the calling thread, between pieces of work of some milliseconds, and must not
// jump out by longjmp or an exception.
typedef int32_t (*gridkit_progress)(void* context, int64_t done, int64_t all);

// ---- Products ----

// A product that is open.
typedef struct gridkit_product gridkit_product;

typedef struct gridkit_open_options {
  size_t size;
  const char* const*
      plugin_folders;          // where format plug-ins are looked for; null with a count of 0:
  size_t plugin_folder_count;  // the environment's GRIDKIT_PLUGINS, else `gridkit` beside the
                               // library
  int32_t sister_satellites;   // gridkit_Choice: products of sister satellites of a format's;
                               // default yes
  int32_t lenient;  // gridkit_Choice: a product whose annotation is at fault in what no pixel needs
                    // is opened over its samples; default no
} gridkit_open_options;

// Opens a product, given as its annotation or its folder. `options` may be null. On success
// `*product` is the caller's to close, else null. Plug-ins stay loaded. Any thread; opening one
// product twice gives two handles, each to be closed.
GRIDKIT_API int32_t gridkit_open(const char* path, const gridkit_open_options* options,
                                 gridkit_product** product, gridkit_error** error);

// Ends a product; null is nothing. Any thread; calls that still run with it end as they would have.
// gridkit_WrongUse for a handle that was closed before.
GRIDKIT_API int32_t gridkit_close(gridkit_product* product);

// The path of the product's annotation.
GRIDKIT_API int32_t gridkit_annotation_path(const gridkit_product* product, char** path,
                                            gridkit_error** error);

// The files that the product is made of, as far as they are known: its annotation first, then the
// image files. `*paths` is one block, freed by one gridkit_free.
GRIDKIT_API int32_t gridkit_files(const gridkit_product* product, char*** paths, size_t* count,
                                  gridkit_error** error);

// What the product is, as JSON: json/v2/info.schema.json, as `gridkit info --json` prints it. Its
// member "warnings" is without what that finds by comparing image files with the annotation.
GRIDKIT_API int32_t gridkit_describe(const gridkit_product* product, char** json,
                                     gridkit_error** error);

// Data beside the pixels, by one of the names that the description lists under "data", as JSON:
// json/v1/data.schema.json. gridkit_NotThere for another name.
GRIDKIT_API int32_t gridkit_data(const gridkit_product* product, const char* name, char** json,
                                 gridkit_error** error);

// ---- Windows ----

// A part of an image: `lines` lines of `samples` samples each, `line_step` and `sample_step` apart
// (0 stands for 1). All of it lies in the image.
typedef struct gridkit_window {
  size_t size;
  int64_t line;
  int64_t sample;
  int64_t lines;    // at least 1
  int64_t samples;  // at least 1
  int64_t line_step;
  int64_t sample_step;
} gridkit_window;

// Where pixels go: that of line l and sample s of the window to data + l * line_stride + s *
// sample_stride bytes. A stride of 0 stands for that of an array without gaps. Strides may be
// negative; the caller sees to it that all of it lies in his memory and that no two pixels overlap.
typedef struct gridkit_target {
  size_t size;
  void* data;
  int64_t line_stride;    // bytes
  int64_t sample_stride;  // bytes
} gridkit_target;

// How far a read came: lines of the window that are there whole, and samples of the line after
// them.
typedef struct gridkit_delivered {
  size_t size;
  int64_t lines;
  int64_t samples;
} gridkit_delivered;

// What a read gives for each sample. I and Q are the sample's parts; of a detected image the
// amplitude stands for their modulus. Numbers are in this machine's byte order.
enum gridkit_Form {
  gridkit_Native = 0,        // as gridkit_SampleType says
  gridkit_ComplexFloat = 1,  // float[2]: I, Q; complex images only
  gridkit_Magnitude = 2,     // float: sqrt(I^2 + Q^2)
  gridkit_Phase = 3,         // float: atan2(Q, I) in radians, 0 of (0, 0); complex images only
  gridkit_Power = 4,         // float: the quantity, linear
  gridkit_Decibels = 5,      // float: 10 log10 of it, minus infinity for 0
  gridkit_Magnitude16 = 6,   // uint16_t: the modulus truncated, as magnitude layers have it
  gridkit_Phase16 = 7        // int16_t: 65536 make a turn, as phase layers have it
};

// What gridkit_Power and gridkit_Decibels measure.
enum gridkit_Quantity {
  gridkit_Intensity = 0,  // I^2 + Q^2
  gridkit_Beta0 = 1,      // radar brightness: the image's calibration factor times that
  gridkit_Sigma0 = 2,     // beta0 * sin(incidence), per area on the ground
  gridkit_Gamma0 = 3      // beta0 * tan(incidence), per area across the line of sight
};

typedef struct gridkit_read_options {
  size_t size;
  int32_t form;               // gridkit_Form; of gridkit_read_samples alone
  int32_t quantity;           // gridkit_Quantity; of gridkit_Power and gridkit_Decibels
  int32_t threads;            // that read: 0 and 1 the calling one alone, -1 one a processor
  int32_t subtract_noise;     // gridkit_Choice: the instrument's noise from beta0, sigma0, gamma0;
                              // default no. Negative powers stay; in decibels they are NaN
  gridkit_progress progress;  // in lines; may be null
  void* context;              // of progress
} gridkit_read_options;

// ---- Images: samples as they are ----

// What samples are in their file.
enum gridkit_SampleType {
  gridkit_ComplexInt16 = 1,  // int16_t[2]: I, Q
  gridkit_ComplexHalf = 2,   // IEEE 754 half precision [2]: I, Q
  gridkit_Uint16 = 3         // uint16_t: detected amplitudes
};

// An image of a product. Texts live as long as the product's handle.
typedef struct gridkit_image {
  size_t size;
  const char* name;          // unique in its product, such as "HH", or "HH_B2" for a burst
  const char* polarisation;  // such as "HH"
  const char* file;          // path of the image file
  int64_t lines;
  int64_t samples;
  int32_t sample_type;         // gridkit_SampleType
  int32_t burst;               // number of the burst in its file, from 1; 0: the file is one image
  const char* first_line_utc;  // as in XML Schema's dateTime; empty where it is not known
  double calibration_factor;   // from powers to radar brightness; 0 where none is told, or several
  int32_t magnitude_layer;     // layers that are made of exactly these samples: of their moduli,
  int32_t phase_layer;         // and of their phases; -1: there is none
  int32_t image_file;          // number of the file in the product
  int32_t reserved;            // 0
} gridkit_image;

// How many images the product has. gridkit_NotThere where its format hands out layers alone.
GRIDKIT_API int32_t gridkit_image_count(const gridkit_product* product, int32_t* count,
                                        gridkit_error** error);

// Describes an image by its number.
GRIDKIT_API int32_t gridkit_get_image(const gridkit_product* product, int32_t number,
                                      gridkit_image* image, gridkit_error** error);

// Bytes of a sample in a form (gridkit_Form) of a type (gridkit_SampleType); 0 where the type has
// no such form.
GRIDKIT_API size_t gridkit_form_bytes(int32_t form, int32_t sample_type);

// Reads a window of an image. `options` may be null: native samples, on the calling thread. Where
// the file ends early or cannot be read, or the call is cancelled, what came before stays, as
// `*delivered` tells (null: nobody asks), and nothing is made up for the rest. gridkit_NotThere for
// a quantity that the product does not calibrate. Reads of any number of threads wait for nobody.
GRIDKIT_API int32_t gridkit_read_samples(const gridkit_product* product, int32_t image,
                                         const gridkit_window* window, const gridkit_target* target,
                                         const gridkit_read_options* options,
                                         gridkit_delivered* delivered, gridkit_error** error);

// ---- Layers: the plug-in's own pixels ----

// A layer of a product. Texts live as long as the product's handle.
typedef struct gridkit_layer {
  size_t size;
  const char* name;
  const char* pixel_type;  // of the format's pixel types: "u16" and "s16" are what they seem
  const char* layer_type;
  int32_t width;  // samples
  int32_t height;
  int32_t block_width;
  int32_t block_height;
} gridkit_layer;

GRIDKIT_API int32_t gridkit_layer_count(const gridkit_product* product, int32_t* count,
                                        gridkit_error** error);

// Describes a layer by its number.
GRIDKIT_API int32_t gridkit_get_layer(const gridkit_product* product, int32_t number,
                                      gridkit_layer* layer, gridkit_error** error);

// Reads a window of a layer, 16 bits a pixel, signed where the pixel type says so. As
// gridkit_read_samples, except that `form` and `quantity` of the options are not looked at. Layers
// that are made of an image's samples are read without a lock, others wait for the product's own.
GRIDKIT_API int32_t gridkit_read_layer(const gridkit_product* product, int32_t layer,
                                       const gridkit_window* window, const gridkit_target* target,
                                       const gridkit_read_options* options,
                                       gridkit_delivered* delivered, gridkit_error** error);

// ---- Pictures ----

// A small picture for the eye: [height][width] numbers without gaps, 0 where there is no data, else
// 1 (dark) to 255 (bright), or of phases once around the circle.
typedef struct gridkit_picture {
  size_t size;
  int32_t width;
  int32_t height;
  unsigned char* numbers;  // the caller's, to be freed by gridkit_free
} gridkit_picture;

// Makes the picture of a layer that `gridkit quicklook` makes, with at most `longest` pixels, 16 to
// 8192, on its longer side. Its pixels are square on the ground where the product can be placed.
// Each is the root of the mean intensity of the layer's pixels in its cell, between the percentiles
// 2 and 98 of all; of phases the direction of their mean phasor. Lines that cannot be read are
// without data.
GRIDKIT_API int32_t gridkit_quicklook(const gridkit_product* product, int32_t layer,
                                      int32_t longest, gridkit_picture* picture,
                                      gridkit_error** error);

// ---- Places ----

// What the place of pixels comes from.
enum gridkit_GeometryKind {
  gridkit_RadarGeometry = 1,  // range-Doppler, with an orbit
  gridkit_MapGeometry = 2     // a map
};

enum gridkit_LookSide { gridkit_LookLeft = -1, gridkit_LookRight = 1 };

// The geometry of a product's images. What only radar geometry has is 0 for a map. Times are
// seconds of the UTC day that year, month and day name, and may lie beyond its ends.
typedef struct gridkit_geometry {
  size_t size;
  int32_t kind;             // gridkit_GeometryKind
  int32_t look_side;        // gridkit_LookSide
  int32_t is_ground_range;  // 1: samples are equally spaced in ground range; 0: in slant range
  int32_t year;
  int32_t month;
  int32_t day;
  double lines;
  double samples;
  double average_height;  // of the scene
  double semimajor;       // of the Earth's ellipsoid
  double semiminor;
  double first_state_time;  // of the first state vector
  double state_interval;    // between state vectors
  int64_t state_vector_count;
  double sample_spacing;  // in slant or in ground range, as is_ground_range says
  int32_t has_delays;     // 1: the product tells corrections of signal delays
  int32_t reserved;       // 0
} gridkit_geometry;

// gridkit_NotThere for a product that publishes neither a sensor model nor map data.
GRIDKIT_API int32_t gridkit_get_geometry(const gridkit_product* product, gridkit_geometry* geometry,
                                         gridkit_error** error);

// The map that a product's images lie on: column c and line r, counted at pixel corners, lie at
// x = upper_left_x + c * pixel_width, y = upper_left_y + r * pixel_height, in metres. With north up
// the height is negative.
typedef struct gridkit_map {
  size_t size;
  double upper_left_x;  // outer corner of the first pixel
  double upper_left_y;
  double pixel_width;
  double pixel_height;
} gridkit_map;

// Gives the map, and its projection as well-known text (WKT 1). gridkit_NotThere for a product that
// lies on none, or on one whose projection has no such text.
GRIDKIT_API int32_t gridkit_get_map(const gridkit_product* product, gridkit_map* map, char** wkt,
                                    gridkit_error** error);

// The state vectors of the orbit, as many as gridkit_geometry.state_vector_count, which the caller
// tells by `count`: [count] times, [count][3] positions and [count][3] velocities, Earth-fixed.
// Each array may be null. gridkit_NotThere for a map.
GRIDKIT_API int32_t gridkit_state_vectors(const gridkit_product* product, size_t count,
                                          double* times, double* positions, double* velocities,
                                          gridkit_error** error);

typedef struct gridkit_place_options {
  size_t size;
  int32_t delays;   // gridkit_Choice: the product's own corrections of signal delays, where it has
                    // some; default yes
  int32_t threads;  // that compute: 0 and 1 the calling one alone, -1 one a processor
  gridkit_progress progress;  // in places; may be null
  void* context;              // of progress
} gridkit_place_options;

// Where pixels lie on Earth: [count] lines and samples, which need not be whole nor inside the
// image, and the heights at which their sights end; a null `height` stands for the scene's average
// height. Gives [count] latitudes and longitudes, and the heights that were taken where
// `height_taken` is not null. An output may be the same array as an input. Where a pixel has no
// place, its outputs are not numbers (NaN); `*without` (null: nobody asks) tells how many.
GRIDKIT_API int32_t gridkit_locate(const gridkit_product* product,
                                   const gridkit_place_options* options, size_t count,
                                   const double* line, const double* sample, const double* height,
                                   double* latitude, double* longitude, double* height_taken,
                                   size_t* without, gridkit_error** error);

// The way back: where places are seen, also outside the image. A null `height` stands for the
// scene's average height. NaN and `*without` as above.
GRIDKIT_API int32_t gridkit_find(const gridkit_product* product,
                                 const gridkit_place_options* options, size_t count,
                                 const double* latitude, const double* longitude,
                                 const double* height, double* line, double* sample,
                                 size_t* without, gridkit_error** error);

// The zero-Doppler coordinates of pixels: when each was abeam of the satellite, in seconds of the
// geometry's day, and its slant range in metres, both as the image has them, without corrections.
// gridkit_NotThere for a map.
GRIDKIT_API int32_t gridkit_radar_coordinates(const gridkit_product* product, size_t count,
                                              const double* line, const double* sample,
                                              double* time, double* slant_range, size_t* without,
                                              gridkit_error** error);

// The terrain's heights at pixels, as the product's own geolocation grid tells them: [count] lines
// and samples, which need not be whole, give [count] heights, bilinear between the grid's points;
// NaN for what is no number. `height` may be the same array as an input. gridkit_NotThere for a
// product that tells no such grid, and for a map.
GRIDKIT_API int32_t gridkit_terrain_heights(const gridkit_product* product, size_t count,
                                            const double* line, const double* sample,
                                            double* height, gridkit_error** error);

typedef struct gridkit_rational_options {
  size_t size;
  double lowest_height;  // both 0: -500 and 9,000 m
  double highest_height;
  int32_t delays;    // gridkit_Choice, as in gridkit_place_options
  int32_t reserved;  // 0
} gridkit_rational_options;

// Rational polynomials in the form RPC00B, from normalised latitude P, longitude L and height H to
// normalised line and sample; terms in the order
//   1 L P H LP LH PH L2 P2 H2 PLH L3 LP2 LH2 L2P P3 PH2 L2H P2H H3
typedef struct gridkit_rational_model {
  size_t size;
  double line_offset;  // pixels, centres at whole numbers
  double line_scale;
  double sample_offset;
  double sample_scale;
  double latitude_offset;
  double latitude_scale;
  double longitude_offset;
  double longitude_scale;
  double height_offset;
  double height_scale;
  double line_numerator[20];
  double line_denominator[20];
  double sample_numerator[20];
  double sample_denominator[20];
  double lowest_height;  // for which it was made
  double highest_height;
  double largest_line_error;    // pixels, against the range-Doppler geometry on a grid that the fit
  double largest_sample_error;  // has not seen
} gridkit_rational_model;

// Fits a rational model to the geometry of the whole image. `options` may be null. gridkit_NotThere
// for a map, and where such a model cannot be made, as around a pole.
GRIDKIT_API int32_t gridkit_fit_rational(const gridkit_product* product,
                                         const gridkit_rational_options* options,
                                         gridkit_rational_model* model, gridkit_error** error);

#ifdef __cplusplus
}
#endif

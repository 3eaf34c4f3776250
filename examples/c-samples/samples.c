/* The images of a product, the complex samples about a pixel, and where on Earth that lies.
 *
 *   samples PRODUCT                 the images
 *   samples PRODUCT LINE SAMPLE     three samples of the first image from there on, and the place
 */

#include <stdio.h>
#include <stdlib.h>

#include <gridkit/gridkit.h>

/* Tells what went wrong and ends it; always 1. */
static int refuse(gridkit_error* error) {
  fprintf(stderr, "samples: %s\n", gridkit_error_message(error));
  gridkit_error_free(error);
  return 1;
}

static int print_images(const gridkit_product* product) {
  gridkit_error* error;
  int32_t count;
  if (gridkit_image_count(product, &count, &error) != gridkit_Done) return refuse(error);
  for (int32_t i = 0; i < count; ++i) {
    gridkit_image image = {.size = sizeof image};
    if (gridkit_get_image(product, i, &image, &error) != gridkit_Done) return refuse(error);
    printf("%s: %lld lines x %lld samples\n", image.name, (long long)image.lines,
           (long long)image.samples);
  }
  return 0;
}

static int print_pixel(const gridkit_product* product, long line, long sample) {
  enum { wide = 3 };
  gridkit_error* error;
  float values[wide][2];
  const gridkit_window window = {
      .size = sizeof window, .line = line, .sample = sample, .lines = 1, .samples = wide};
  const gridkit_target target = {.size = sizeof target, .data = values};
  const gridkit_read_options options = {.size = sizeof options, .form = gridkit_ComplexFloat};
  if (gridkit_read_samples(product, 0, &window, &target, &options, NULL, &error) != gridkit_Done) {
    return refuse(error);
  }
  for (int i = 0; i < wide; ++i) printf("%g %+gi\n", values[i][0], values[i][1]);

  const double at_line = (double)line;
  const double at_sample = (double)sample;
  double latitude, longitude, height;
  if (gridkit_locate(product, NULL, 1, &at_line, &at_sample, NULL, &latitude, &longitude, &height,
                     NULL, &error) != gridkit_Done) {
    return refuse(error);
  }
  printf("at %.6f, %.6f, %.0f m above the ellipsoid\n", latitude, longitude, height);
  return 0;
}

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    fprintf(stderr, "usage: samples PRODUCT [LINE SAMPLE]\n");
    return 2;
  }
  gridkit_error* error;
  gridkit_product* product;
  if (gridkit_open(argv[1], NULL, &product, &error) != gridkit_Done) return refuse(error);
  const int status =
      argc == 2 ? print_images(product) : print_pixel(product, atol(argv[2]), atol(argv[3]));
  gridkit_close(product);
  return status;
}

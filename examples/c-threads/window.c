/* A window of radar brightness, read by two threads, each half of the lines into one array; prints
 * its mean in decibels.
 *
 *   window PRODUCT LINE SAMPLE LINES SAMPLES
 *
 * The library could do that by itself (gridkit_read_options.threads): this shows that one product
 * may be used by any number of threads of the caller's own.
 */

#include <math.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

#include <gridkit/gridkit.h>

/* What a thread is to do, and how that ended. */
typedef struct Part {
  const gridkit_product* product;
  gridkit_window window;
  float* values;
  gridkit_error* error;
} Part;

static void* read_part(void* argument) {
  Part* part = argument;
  const gridkit_target target = {.size = sizeof target, .data = part->values};
  const gridkit_read_options options = {
      .size = sizeof options, .form = gridkit_Power, .quantity = gridkit_Beta0};
  gridkit_read_samples(part->product, 0, &part->window, &target, &options, NULL, &part->error);
  return NULL;
}

/* Reads on two threads; 0, or 1 after telling why not. */
static int read_window(const gridkit_product* product, const gridkit_window* whole, float* values) {
  Part parts[2];
  pthread_t threads[2];
  const int64_t half = whole->lines / 2;
  int status = 0;
  for (int i = 0; i < 2; ++i) {
    parts[i] = (Part){product, *whole, values + i * half * whole->samples, NULL};
    parts[i].window.line += i * half;
    parts[i].window.lines = i == 0 ? half : whole->lines - half;
  }
  if (pthread_create(&threads[0], NULL, read_part, &parts[0]) != 0) return 1;
  read_part(&parts[1]);
  pthread_join(threads[0], NULL);
  for (int i = 0; i < 2; ++i) {
    if (parts[i].error == NULL) continue;
    fprintf(stderr, "window: %s\n", gridkit_error_message(parts[i].error));
    gridkit_error_free(parts[i].error);
    status = 1;
  }
  return status;
}

int main(int argc, char** argv) {
  if (argc != 6) {
    fprintf(stderr, "usage: window PRODUCT LINE SAMPLE LINES SAMPLES\n");
    return 2;
  }
  const gridkit_window window = {.size = sizeof window,
                                 .line = atol(argv[2]),
                                 .sample = atol(argv[3]),
                                 .lines = atol(argv[4]),
                                 .samples = atol(argv[5])};
  if (window.lines < 2 || window.samples < 1 || window.lines > 65536 || window.samples > 65536) {
    fprintf(stderr, "window: it has 2 to 65536 lines and 1 to 65536 samples\n");
    return 2;
  }
  gridkit_error* error;
  gridkit_product* product;
  if (gridkit_open(argv[1], NULL, &product, &error) != gridkit_Done) {
    fprintf(stderr, "window: %s\n", gridkit_error_message(error));
    gridkit_error_free(error);
    return 1;
  }
  const size_t count = (size_t)(window.lines * window.samples);
  float* values = malloc(count * sizeof *values);
  const int status = values == NULL ? 1 : read_window(product, &window, values);
  gridkit_close(product);
  if (status == 0) {
    double sum = 0;
    for (size_t i = 0; i < count; ++i) sum += values[i];
    printf("%zu samples, mean beta0 %.2f dB\n", count, 10 * log10(sum / (double)count));
  }
  free(values);
  return status;
}

// A format plug-in, complete and small: 16-bit grey images in PGM's binary form. Such a file begins
// with the text "P5", the width, the height and the greatest grey value, parted by blanks, and one
// more blank; then come the pixels, line by line, two bytes each, the higher first. A header with
// comments in it is not read.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <new>

#include <gridkit/file.h>
#include <gridkit/memory.h>
#include <gridkit/preference.h>
#include <gridkit/report.h>
#include <gridkit/text.h>
#include <handlepool/handlepool.h>

#define PGM_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// An open image. The host sees its address only.
struct Image {
  char* path = nullptr;
  gkf_Stream* stream = nullptr;
  int32_t width = 0;
  int32_t height = 0;
  int64_t first_pixel = 0;  // where the pixels begin in the file, in bytes
};

// An open layer. An image has one, so all it holds is the image and how it is cut into blocks.
struct Layer {
  Image* image;
  int32_t block;  // width and height of a block, in pixels
};

// Tells the host what went wrong, and gives the result that stands for failure. The message comes
// from gks_Sprintf; null means that there was no memory for it.
int32_t fail(const char* function, char* message) {
  gke_Report* report = gke_CreateErrorReport(function, 0, gke_SeverityError, nullptr,
                                             message == nullptr ? "out of memory" : message, 0);
  gke_PrintErrorReport(report, 0, 0);
  gke_DeleteErrorReportEx(&report);
  gkm_HeapFree(message);
  return -1;
}

// Every text and list that the host gets is the host's to free, so it comes from the host's heap.
int32_t give_text(char** out, const char* text) {
  *out = gks_Duplicate(text);
  return *out == nullptr ? -1 : 0;
}

int32_t give_list_of_one(char*** out, const char* text) {
  *out = static_cast<char**>(gkm_HeapMalloc(sizeof(char*)));
  return *out == nullptr ? -1 : give_text(*out, text);
}

// What stands at the beginning of the file. Gives false when it is no PGM of 16 bits a pixel.
bool read_header(Image& image) {
  char header[64] = {};
  const size_t length = gkf_fread(header, 1, sizeof header - 1, image.stream);
  int32_t greatest = 0;
  int end = 0;
  const int found = std::sscanf(header, "P5%*1[ \t\r\n]%9d %9d %9d%n", &image.width, &image.height,
                                &greatest, &end);
  image.first_pixel = end + 1;
  const bool ends_well = static_cast<size_t>(end) < length &&
                         std::isspace(static_cast<unsigned char>(header[end])) != 0;
  return found == 3 && ends_well && image.width > 0 && image.height > 0 && greatest > 255 &&
         greatest < 65536;
}

// The registry calls this when the image leaves it.
int32_t end_image(void* handle) {
  auto* image = static_cast<Image*>(handle);
  if (image->stream != nullptr) gkf_fclose(image->stream);
  gkm_HeapFree(image->path);
  delete image;
  return 0;
}

}  // namespace

// ---- The format: what the host may know before it opens a file
// ------------------------------------

PGM_EXPORT int32_t pgmInstanceDescriptionGet(char** description) {
  return give_text(description, "grey images of 16 bits, portable grey map");
}

PGM_EXPORT int32_t pgmInstanceTitleListGet(int32_t* count, char*** titles) {
  *count = 1;
  return give_list_of_one(titles, "PGM");
}

// One template of file names a title, and one byte of value 0 a template.
PGM_EXPORT int32_t pgmInstanceTemplateListGet(char*** templates, unsigned char** flags) {
  *flags = static_cast<unsigned char*>(gkm_HeapMalloc(1));
  if (*flags == nullptr) return -1;
  **flags = 0;
  return give_list_of_one(templates, "*.pgm");
}

PGM_EXPORT int32_t pgmInstanceExtListGet(char*** extensions) {
  return give_list_of_one(extensions, ".pgm");
}

PGM_EXPORT int32_t pgmInstanceShortNameListGet(char*** shortNames) {
  return give_list_of_one(shortNames, "pgm");
}

PGM_EXPORT int32_t pgmInstancePixelTypesGet(int32_t* count, char*** pixelTypes) {
  *count = 1;
  return give_list_of_one(pixelTypes, "u16");
}

PGM_EXPORT int32_t pgmInstanceLayerTypesGet(int32_t* count, char*** layerTypes) {
  *count = 1;
  return give_list_of_one(layerTypes, "grey");
}

// Whether a map projection could be kept in a file of the format: no.
PGM_EXPORT int32_t pgmInstanceMapProjectionIsSupported(void*, const char*, void*, void*, void*,
                                                       void*, void*, void*, void*, void*) {
  return 0;
}

// ---- A file
// ---------------------------------------------------------------------------------------

// Asked with a null mode it only says whether the file is of the format: title 0, else -1.
PGM_EXPORT Image* pgmFileTitleIdentifyAndOpen(const char* fileName, int32_t* titleIndex,
                                              const char* mode) {
  if (titleIndex != nullptr) *titleIndex = -1;
  auto* image = new (std::nothrow) Image;
  if (image == nullptr) return nullptr;
  image->path = gks_Duplicate(fileName);
  image->stream = gkf_fopen(fileName, "rb");
  const bool known = image->stream != nullptr && read_header(*image);
  if (known && titleIndex != nullptr) *titleIndex = 0;
  void* open = pool_FindFileHandleIfOpen(fileName, 0);
  if (!known || mode == nullptr || open != nullptr) {
    end_image(image);
    return known && mode != nullptr ? static_cast<Image*>(open) : nullptr;
  }
  if (image->path == nullptr || pool_AddFileHandleToList(image, fileName, end_image) != 0) {
    fail("pgmFileTitleIdentifyAndOpen", nullptr);
    end_image(image);
    return nullptr;
  }
  return image;
}

PGM_EXPORT int32_t pgmFileClose(Image* image) {
  pool_RemoveFileHandleFromList(image->path, 0);
  return 0;
}

PGM_EXPORT int32_t pgmFileLayerNamesGet(Image*, int32_t* count, char*** names) {
  *count = 1;
  return give_list_of_one(names, "GREY");
}

// Data beside the pixels: none. A name that is not known leaves the outs as they are.
PGM_EXPORT int32_t pgmFileRasterFormatsNonStandardDataNamesGet(Image*, int32_t* count,
                                                               char*** names) {
  *count = 0;
  *names = nullptr;
  return 0;
}

PGM_EXPORT int32_t pgmFileDataRead(Image*, const char*, void**, int32_t*, char**, char**) {
  return 0;
}

PGM_EXPORT int32_t pgmFileDataModTimeGet(Image*, const char*, int64_t* time) {
  *time = -1;
  return 0;
}

// ---- A layer
// --------------------------------------------------------------------------------------

// The types are indices into the lists above.
PGM_EXPORT int32_t pgmLayerOpen(Image* image, const char* layerName, int32_t* pixelType,
                                int32_t* width, int32_t* height, int32_t* layerType,
                                int32_t* blockWidth, int32_t* blockHeight, Layer** layer) {
  *layer = nullptr;
  if (std::strcmp(layerName, "GREY") != 0) {
    return fail("pgmLayerOpen",
                gks_Sprintf(nullptr, "no layer %s; there is GREY", nullptr, layerName));
  }
  const double block = gkp_GetNumberPreference("import", "default_block_size", 64, nullptr);
  if (!(block >= 1 && block <= 4096)) {
    return fail("pgmLayerOpen", gks_Sprintf(nullptr, "no blocks of size %g", nullptr, block));
  }
  *pixelType = *layerType = 0;
  *width = image->width;
  *height = image->height;
  *blockWidth = *blockHeight = static_cast<int32_t>(block);
  *layer = new (std::nothrow) Layer{image, *blockWidth};
  return *layer == nullptr ? fail("pgmLayerOpen", nullptr) : 0;
}

PGM_EXPORT int32_t pgmLayerClose(Layer* layer) {
  delete layer;
  return 0;
}

// A block is always whole: what of it lies outside the image is 0.
PGM_EXPORT int32_t pgmLayerRasterRead(Layer* layer, int32_t blockRow, int32_t blockColumn,
                                      void** pixelData) {
  const Image& image = *layer->image;
  const int64_t first_line = int64_t{blockRow} * layer->block;
  const int64_t first_column = int64_t{blockColumn} * layer->block;
  if (blockRow < 0 || blockColumn < 0 || first_line >= image.height ||
      first_column >= image.width) {
    return fail("pgmLayerRasterRead",
                gks_Sprintf(nullptr, "%s: no such block", nullptr, image.path));
  }
  const auto block = static_cast<size_t>(layer->block);
  auto* pixels = static_cast<uint16_t*>(*pixelData);
  std::memset(pixels, 0, block * block * sizeof *pixels);
  const auto columns =
      static_cast<size_t>(std::min<int64_t>(layer->block, image.width - first_column));
  const int64_t end = std::min<int64_t>(first_line + layer->block, image.height);
  for (int64_t line = first_line; line < end; ++line, pixels += block) {
    const int64_t place = image.first_pixel + 2 * (line * image.width + first_column);
    if (gkf_fseeko(image.stream, place, 0) != 0 ||
        gkf_fread(pixels, 2, columns, image.stream) != columns) {
      return fail("pgmLayerRasterRead",
                  gks_Sprintf(nullptr, "%s: line %lld cannot be read", nullptr, image.path,
                              static_cast<long long>(line)));
    }
    gkm_MemSwab(pixels, columns, 2);
  }
  return 0;
}

// Where the layer lies on a map: nowhere, told by null names and outs that stay as they are.
PGM_EXPORT int32_t pgmLayerMapInfoRead(Layer*, char** projectionName, double*, double*, double*,
                                       double*, char** units) {
  *projectionName = *units = nullptr;
  return 0;
}

PGM_EXPORT int32_t pgmLayerMapProjectionRead(Layer*, char** projectionName, void** v2, void** v3,
                                             void** v4, void** v5, void** v6, void** v7, void** v8,
                                             void** v9) {
  *projectionName = nullptr;
  for (void** value : {v2, v3, v4, v5, v6, v7, v8, v9}) *value = nullptr;
  return 0;
}

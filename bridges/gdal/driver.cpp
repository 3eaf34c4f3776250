// GRIDKIT, a driver of GDAL's: products of the host's formats, by names that begin with GRIDKIT:.

#include <cpl_conv.h>
#include <cpl_vsi.h>
#include <gdal_priv.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bridges/gdal/connection.h"
#include "bridges/gdal/raster_dataset.h"

namespace {

using gridkit_gdal::Connection;
using gridkit_gdal::HostError;
using gridkit_gdal::PlaceOptions;
using gridkit_gdal::Product;
using gridkit_gdal::RasterDataset;

// Without an entry in GDAL's order of drivers this one is asked first, for every file: so it
// answers to its prefix alone, unless the configuration wants annotations by their plain path.
int identify(GDALOpenInfo* info) {
  if (gridkit_gdal::has_prefix(info->pszFilename)) return TRUE;
  if (!CPLTestBool(CPLGetConfigOption("GRIDKIT_IDENTIFY", "NO"))) return FALSE;
  if (info->pabyHeader == nullptr) return FALSE;
  const std::string_view begin(reinterpret_cast<const char*>(info->pabyHeader),
                               static_cast<std::size_t>(info->nHeaderBytes));
  // An annotation is XML, which may stand after a mark of its byte order and blanks.
  const std::size_t first = begin.find_first_not_of("\xEF\xBB\xBF \t\r\n");
  const bool is_markup = first != std::string_view::npos && begin[first] == '<';
  return is_markup ? GDAL_IDENTIFY_UNKNOWN : FALSE;
}

bool exists(const std::string& path) {
  VSIStatBufL status;
  return VSIStatExL(path.c_str(), &status, VSI_STAT_EXISTS_FLAG) == 0;
}

// What the name means: the reading whose path is there, else the one with the shortest path.
Connection connection_of(const char* name) {
  if (!gridkit_gdal::has_prefix(name)) return {name, {}, gridkit_gdal::Quantity::samples};
  const auto readings = gridkit_gdal::readings_of(name);
  for (const Connection& reading : readings) {
    if (exists(reading.path)) return reading;
  }
  return readings.back();
}

int32_t choice_of(char** options, const char* name) {
  const char* text = CSLFetchNameValue(options, name);
  if (text == nullptr) return gridkit_Default;
  return CPLTestBool(text) ? gridkit_Yes : gridkit_No;
}

PlaceOptions place_options_of(char** options) {
  PlaceOptions wish;
  wish.delays = choice_of(options, "DELAYS");
  const char* height = CSLFetchNameValue(options, "HEIGHT");
  if (height == nullptr) return wish;
  char* end = nullptr;
  wish.height = CPLStrtod(height, &end);
  wish.has_height = true;
  const bool is_sensible = wish.height > -20000 && wish.height < 20000;
  if (end == height || *end != '\0' || !is_sensible) {
    throw std::invalid_argument("HEIGHT=" + std::string(height) +
                                ": give metres above the ellipsoid, such as 600");
  }
  return wish;
}

std::unique_ptr<RasterDataset> opened(GDALOpenInfo* info) {
  const PlaceOptions options = place_options_of(info->papszOpenOptions);
  const Connection connection = connection_of(info->pszFilename);
  HostError error;
  const Product product = gridkit_gdal::open_product(connection.path, error);
  if (product == nullptr) {
    const bool is_asked = gridkit_gdal::has_prefix(info->pszFilename);
    if (is_asked || error.code() != gridkit_NotRecognised) error.report();
    return nullptr;
  }
  auto dataset = std::make_unique<RasterDataset>(product);
  bool has_band = !connection.part.empty();
  if (!has_band) {
    dataset->list_parts(connection.path);
    const std::size_t images = gridkit_gdal::images_of(product).size();
    has_band = images == 1 || (images == 0 && gridkit_gdal::layers_of(product).size() == 1);
  }
  if (!has_band) return dataset;
  const auto source = gridkit_gdal::source_of(product, connection,
                                              choice_of(info->papszOpenOptions, "SUBTRACT_NOISE"));
  if (!source || !dataset->take(*source, options)) return nullptr;
  return dataset;
}

// No exception crosses into GDAL.
GDALDataset* open(GDALOpenInfo* info) try {
  if (identify(info) == FALSE) return nullptr;
  if (info->eAccess == GA_Update) {
    CPLError(CE_Failure, CPLE_NotSupported, "%s: the GRIDKIT driver only reads", info->pszFilename);
    return nullptr;
  }
  auto dataset = opened(info);
  if (dataset != nullptr) dataset->SetDescription(info->pszFilename);
  return dataset.release();
} catch (const std::exception& error) {
  CPLError(CE_Failure, CPLE_OpenFailed, "%s", error.what());
  return nullptr;
}

}  // namespace

// GDAL calls it by its name, which comes from that of the file, after loading.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" CPL_DLL void GDALRegister_GRIDKIT() {
  if (!GDAL_CHECK_VERSION("GRIDKIT") || GDALGetDriverByName("GRIDKIT") != nullptr) return;
  auto driver = std::make_unique<GDALDriver>();
  driver->SetDescription("GRIDKIT");
  driver->SetMetadataItem(GDAL_DCAP_RASTER, "YES");
  driver->SetMetadataItem(GDAL_DCAP_OPEN, "YES");
  driver->SetMetadataItem(GDAL_DMD_LONGNAME, "SAR products through gridkit");
  driver->SetMetadataItem(GDAL_DMD_CONNECTION_PREFIX, "GRIDKIT:");
  driver->SetMetadataItem(GDAL_DMD_SUBDATASETS, "YES");
  driver->SetMetadataItem(
      GDAL_DMD_OPENOPTIONLIST,
      "<OpenOptionList>"
      "<Option name='DELAYS' type='boolean' default='YES' description='Apply the signal delays "
      "that the product tells to control points and rational polynomials'/>"
      "<Option name='HEIGHT' type='float' description='Of the control points, metres above the "
      "ellipsoid, in place of the terrain&apos;s'/>"
      "<Option name='SUBTRACT_NOISE' type='boolean' default='NO' description='Take the "
      "instrument&apos;s own noise from BETA0, SIGMA0 and GAMMA0'/>"
      "</OpenOptionList>");
  driver->pfnIdentify = identify;
  driver->pfnOpen = open;
  GetGDALDriverManager()->RegisterDriver(driver.release());
}

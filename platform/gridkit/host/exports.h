#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

// The nineteen functions of a format plug-in, as the loader finds them.

namespace gridkit {

using FileHandle = void*;
using LayerHandle = void*;
using MifValue = void*;

struct LibraryCloser {
  void operator()(void* library) const;
};

struct Exports {
  std::unique_ptr<void, LibraryCloser> library;

  std::int32_t (*InstanceDescriptionGet)(char**);
  std::int32_t (*InstanceTitleListGet)(std::int32_t*, char***);
  std::int32_t (*InstanceTemplateListGet)(char***, unsigned char**);
  std::int32_t (*InstanceExtListGet)(char***);
  std::int32_t (*InstanceShortNameListGet)(char***);
  std::int32_t (*InstancePixelTypesGet)(std::int32_t*, char***);
  std::int32_t (*InstanceLayerTypesGet)(std::int32_t*, char***);
  std::int32_t (*InstanceMapProjectionIsSupported)(void*, const char*, MifValue, MifValue, MifValue,
                                                   MifValue, MifValue, MifValue, MifValue,
                                                   MifValue);
  FileHandle (*FileTitleIdentifyAndOpen)(const char*, std::int32_t*, const char*);
  std::int32_t (*FileClose)(FileHandle);
  std::int32_t (*FileDataModTimeGet)(FileHandle, const char*, std::int64_t*);
  std::int32_t (*FileLayerNamesGet)(FileHandle, std::int32_t*, char***);
  std::int32_t (*FileRasterFormatsNonStandardDataNamesGet)(FileHandle, std::int32_t*, char***);
  std::int32_t (*FileDataRead)(FileHandle, const char*, void**, std::int32_t*, char**, char**);
  std::int32_t (*LayerOpen)(FileHandle, const char*, std::int32_t*, std::int32_t*, std::int32_t*,
                            std::int32_t*, std::int32_t*, std::int32_t*, LayerHandle*);
  std::int32_t (*LayerClose)(LayerHandle);
  std::int32_t (*LayerRasterRead)(LayerHandle, std::int32_t, std::int32_t, void**);
  std::int32_t (*LayerMapInfoRead)(LayerHandle, char**, double*, double*, double*, double*, char**);
  std::int32_t (*LayerMapProjectionRead)(LayerHandle, char**, MifValue*, MifValue*, MifValue*,
                                         MifValue*, MifValue*, MifValue*, MifValue*, MifValue*);
};

// Loads a library and finds its exports. Throws Error.
std::unique_ptr<Exports> find_exports(const std::filesystem::path& library);

}  // namespace gridkit

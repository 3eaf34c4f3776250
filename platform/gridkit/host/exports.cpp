#include "gridkit/host/exports.h"

#include <dlfcn.h>

#include "gridkit/error.h"
#include "gridkit/services/plain_locale.h"

namespace gridkit {

namespace {

template <class Function>
void find(const Exports& exports, const std::string& name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(exports.library.get(), name.c_str()));
  if (function == nullptr) throw Error("it has no function " + name);
}

// Why a library was not loaded.
std::string loader_error() {
  const PlainLocale plain;
  return ::dlerror();
}

}  // namespace

void LibraryCloser::operator()(void* library) const {
  ::dlclose(library);
}

std::unique_ptr<Exports> find_exports(const std::filesystem::path& library) try {
  auto exports = std::make_unique<Exports>();
  exports->library.reset(::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (exports->library == nullptr) throw Error(loader_error());
  const std::string prefix = library.stem().string();
  Exports& e = *exports;
  find(e, prefix + "InstanceDescriptionGet", e.InstanceDescriptionGet);
  find(e, prefix + "InstanceTitleListGet", e.InstanceTitleListGet);
  find(e, prefix + "InstanceTemplateListGet", e.InstanceTemplateListGet);
  find(e, prefix + "InstanceExtListGet", e.InstanceExtListGet);
  find(e, prefix + "InstanceShortNameListGet", e.InstanceShortNameListGet);
  find(e, prefix + "InstancePixelTypesGet", e.InstancePixelTypesGet);
  find(e, prefix + "InstanceLayerTypesGet", e.InstanceLayerTypesGet);
  find(e, prefix + "InstanceMapProjectionIsSupported", e.InstanceMapProjectionIsSupported);
  find(e, prefix + "FileTitleIdentifyAndOpen", e.FileTitleIdentifyAndOpen);
  find(e, prefix + "FileClose", e.FileClose);
  find(e, prefix + "FileDataModTimeGet", e.FileDataModTimeGet);
  find(e, prefix + "FileLayerNamesGet", e.FileLayerNamesGet);
  find(e, prefix + "FileRasterFormatsNonStandardDataNamesGet",
       e.FileRasterFormatsNonStandardDataNamesGet);
  find(e, prefix + "FileDataRead", e.FileDataRead);
  find(e, prefix + "LayerOpen", e.LayerOpen);
  find(e, prefix + "LayerClose", e.LayerClose);
  find(e, prefix + "LayerRasterRead", e.LayerRasterRead);
  find(e, prefix + "LayerMapInfoRead", e.LayerMapInfoRead);
  find(e, prefix + "LayerMapProjectionRead", e.LayerMapProjectionRead);
  return exports;
} catch (const Error& error) {
  throw Error(library.string() + ": not a format plug-in: " + error.what());
}

}  // namespace gridkit

#include "gridkit/samples/companion_library.h"

#include <mutex>
#include <string>
#include <system_error>

#include <dlfcn.h>

#include "gridkit/error.h"

namespace gridkit {
namespace {

// The system's loader keeps threads apart by a lock of its own. This one orders what a library's
// constants are filled with before another thread's use of them where checkers see it too.
std::mutex& loading() {
  static std::mutex mutex;
  return mutex;
}

void* load(const std::filesystem::path& library) {
  const std::lock_guard guard(loading());
  void* const loaded = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (loaded == nullptr) throw Error("the companion does not load: " + std::string(::dlerror()));
  return loaded;
}

void unload(void* loaded) {
  const std::lock_guard guard(loading());
  ::dlclose(loaded);
}

}  // namespace

std::shared_ptr<const gkc_Companion> load_companion(const std::filesystem::path& library) {
  std::error_code ignored;
  if (!std::filesystem::exists(library, ignored)) {
    throw Error("the plug-in has no companion (" + library.string() +
                "), so that samples cannot be reached; its layers can");
  }
  const std::shared_ptr<void> loaded(load(library), unload);
  const auto entry = reinterpret_cast<gkc_GetCompanionFunction>(::dlsym(loaded.get(), GKC_ENTRY));
  const gkc_Companion* table = entry == nullptr ? nullptr : entry();
  if (table == nullptr) throw Error(library.string() + ": is no companion: it lacks " GKC_ENTRY);
  if (table->version != GKC_VERSION || !GKC_HAS(table, gkc_Companion, read_valid_samples)) {
    throw Error(library.string() + ": is a companion of version " + std::to_string(table->version) +
                ", and this host knows version " + std::to_string(GKC_VERSION));
  }
  return {loaded, table};
}

}  // namespace gridkit

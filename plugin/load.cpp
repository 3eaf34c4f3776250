#include "debug/debug_channel.h"

namespace {

// The library's only action at load; at unload it does nothing of its own.
__attribute__((constructor)) void at_load() {
  DisableThreadLibraryCalls(nullptr);
}

}  // namespace

#include "debug/debug_channel.h"

#include <atomic>
#include <cstdio>

namespace {

std::atomic<bool>& channel_enabled() {
  static std::atomic<bool> enabled = false;
  return enabled;
}

}  // namespace

void OutputDebugStringA(const char* text) {
  if (text != nullptr && channel_enabled()) std::fputs(text, stderr);
}

void debug_EnableChannel(int32_t enabled) {
  channel_enabled() = enabled != 0;
}

int32_t DisableThreadLibraryCalls(void*) {
  return 1;
}

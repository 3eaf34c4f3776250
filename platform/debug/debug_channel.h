#pragma once

#include <stdint.h>

#include "gridkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// The platform's debug channel: texts for whoever watches. It is silent until the host turns it on;
// then texts go to standard error as they are. A null text is nothing.
GRIDKIT_API void OutputDebugStringA(const char* text);

// Turns the channel on (non-zero) or off, for the whole process.
GRIDKIT_API void debug_EnableChannel(int32_t enabled);

// Asks for no notification of threads that come and go. Nothing is notified here, so the answer is
// always success, non-zero.
GRIDKIT_API int32_t DisableThreadLibraryCalls(void* library);

#ifdef __cplusplus
}
#endif

#include "record/run_counters.h"

#include "debug/debug_channel.h"
#include "gridkit/text.h"

std::int32_t s_tsxFileTitleIdentifyAndOpenCount = 0;
std::int32_t s_tsxFileCloseCount = 0;
std::int32_t s_tsxLayerOpenCount = 0;
std::int32_t s_tsxLayerCloseCount = 0;

// Kept on purpose: the text is not freed, so each print costs one small block that lives until the
// process ends. Without memory a null text goes to the channel.
//
// ThreadSanitizer is not to look here: that the counters are unsynchronised is known, and a count
// that is lost when two threads raise one at once has no effect.
[[gnu::no_sanitize_thread]] void tsx_RaiseCounter(std::int32_t& counter, const char* format,
                                                  gke_Report** err) {
  ++counter;
  OutputDebugStringA(gks_Sprintf(nullptr, format, err, counter));
}

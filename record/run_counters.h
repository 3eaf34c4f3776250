#pragma once

#include <cstdint>

#include "record/report_frame.h"

// How often products and layers were opened and closed since the library was loaded. The counters
// are unsynchronised and serve the debug channel alone: a lost count has no effect.
extern std::int32_t s_tsxFileTitleIdentifyAndOpenCount;
extern std::int32_t s_tsxFileCloseCount;
extern std::int32_t s_tsxLayerOpenCount;
extern std::int32_t s_tsxLayerCloseCount;

// Adds one to a counter and sends its text to the debug channel. `format` makes the text of the
// counter's new value; the toolkit gets it as it stands.
[[gnu::format(printf, 2, 0)]] void tsx_RaiseCounter(std::int32_t& counter, const char* format,
                                                    gke_Report** err);

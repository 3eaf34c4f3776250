#pragma once

#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Number preferences, by group and name, for the whole process. Safe to use from several threads.

// The value, or `defaultValue` where none is set.
GRIDKIT_API double gkp_GetNumberPreference(const char* group, const char* name, double defaultValue,
                                           gke_Report** err);

// Sets a value; 0, or -1 and a report for a missing group or name or a value that is not finite.
GRIDKIT_API int32_t gkp_SetNumberPreference(const char* group, const char* name, double value,
                                            gke_Report** err);

// Back to the default.
GRIDKIT_API void gkp_ClearNumberPreference(const char* group, const char* name);

// Sets the preferences of a file: lines of the form `group.name = number`, blank lines, and
// comments from `#` to the line's end; at most 1 MiB of a regular file. 0, or -1 and a report that
// names file and line; then none of the file's values is set.
GRIDKIT_API int32_t gkp_LoadPreferences(const char* path, gke_Report** err);

#ifdef __cplusplus
}
#endif

#pragma once

#include <stddef.h>
#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Texts are zero-ended and 8-bit. New texts come from gkm_HeapMalloc and belong to the caller.

// A heap copy; null without memory or for a null text.
GRIDKIT_API char* gks_Duplicate(const char* text);

// Formats by the rules of printf in the locale "C", whatever the process's is. With a null buffer
// the result is a new heap text; else it is written to `buffer`, which must hold it, and returned.
// A failure gives null and a report.
GRIDKIT_API char* gks_Sprintf(char* buffer, const char* format, gke_Report** err, ...)
    __attribute__((format(printf, 2, 4)));

// Where `pattern` first occurs in `text`, null when it does not or either is null.
GRIDKIT_API const char* gks_SubString(const char* text, const char* pattern);

// The directory part of a path with its closing separator, an empty text when it has none. Writes
// at most `size` bytes with the end: a directory that does not fit gives an empty text. A buffer of
// as many bytes as the path has characters always holds it, unless the path ends in its separator.
GRIDKIT_API void gks_GetPathPart(const char* path, char* buffer, size_t size);

// Non-zero when the first `length` characters agree, ASCII case aside; a text that ends before
// agrees only with one that ends there too.
GRIDKIT_API int32_t gks_Eqnic(const char* a, const char* b, size_t length);

// As strcmp and strlen; a null text equals only null and is the least, and its length is 0.
GRIDKIT_API int32_t gkt_Text_strcmp(const char* a, const char* b);
GRIDKIT_API size_t gkt_Text_strlen(const char* text);

// Last occurrence of a character, null when there is none.
GRIDKIT_API const char* gkt_Text_strrchr(const char* text, int32_t character);

// Decimal text to a 32-bit integer: blanks, an optional sign, digits up to the first other
// character. Beyond the range it is the nearest end of it; without digits 0.
GRIDKIT_API int32_t gkt_Text_atol(const char* text);

// Compiles a POSIX extended regular expression into the toolkit's current pattern; 0 on success,
// else -1 and no pattern is current. Each thread has one current pattern. Patterns and texts are
// those of the locale "C", byte by byte, whatever the process's is: "[A-Z]" is 26 letters.
GRIDKIT_API int32_t gks_REComp(const char* pattern);

// Non-zero when the text matches the current pattern; 0 without one.
GRIDKIT_API int32_t gks_REExec(const char* text);

#ifdef __cplusplus
}
#endif

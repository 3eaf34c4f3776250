#pragma once

#include <stddef.h>
#include <stdint.h>

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// Files read line by line, and streams read at any place. Only regular files open: a directory, a
// pipe or a device is refused at once and nothing waits on it. Every operation answers a null
// handle with a failure.

// 1 when something of that name exists and can be looked at, else 0. Reports nothing.
GRIDKIT_API int32_t gkf_FileExists(const char* path, gke_Report** err);

// A file open for reading, its place at the start; null and a report on failure. `mode` is "r", "w"
// or "a", with "b" and "+" in any order after it. A mode for writing asks for the permission to
// write, and that is all: this toolkit has no operation that writes, so opening never creates or
// empties a file. `reserved` is 0.
typedef struct gkf_File gkf_File;
GRIDKIT_API gkf_File* gkf_Open(const char* path, const char* mode, gke_Report** err,
                               int32_t reserved);

// Closes; a null handle is accepted without a report. A handle whose closing failed holds no open
// file any more and is good for nothing but another gkf_Close, which ends it.
GRIDKIT_API void gkf_Close(gkf_File* file, gke_Report** err);

// One line of at most size - 1 characters, its line end included, into `buffer`, zero-ended. A line
// that is longer comes in several reads. At the end of the file, and on a read error, it reports
// and leaves an empty text. A zero byte in the line ends the text early.
GRIDKIT_API void gkf_Fgets(char* buffer, int32_t size, gkf_File* file, gke_Report** err);

// A stream for reading at any place ("r" or "rb"), null on failure. One thread at a time may use a
// stream; different streams are independent of each other.
//
// Reads of less than 4 KiB are served from pages of the file that the stream keeps in memory, so
// that a sweep over an image block by block reads each byte of the file about once. Longer reads go
// straight into the caller's buffer. The number preference "stream_cache_megabytes" of the group
// "gridkit" bounds the memory: 64 where it is not set, at most 4096, none below one page of 64 KiB;
// it is looked up at opening. A sweep touches about 64 KiB for each line of a block. What the
// stream reads from the file is never more than three times what it delivers plus that memory.
// Where there is no memory to be had it reads as without a cache.
//
// Held bytes follow the file: the stream looks at it before it reads a page, and with the first
// such read after a seek backwards. From then on nothing is delivered that lies past the end of a
// file which shrank, and nothing held of a file that was written to more than a hundredth of a
// second before, as far as the file's times tell. That a file ended is always the file's own word
// and never a held page's, so a file that grew is read on; an error in reading a page is told only
// to who asked for the bytes that cannot be read.
typedef struct gkf_Stream gkf_Stream;
GRIDKIT_API gkf_Stream* gkf_fopen(const char* path, const char* mode);

// Closes; 0 on success, -1 for a null handle or when closing failed. The handle is gone in any
// case.
GRIDKIT_API int32_t gkf_fclose(gkf_Stream* stream);

// Moves to `offset` bytes from the start of the file (`origin` 0, the only one). 0 on success, -1
// for a negative offset, another origin or a null handle. A place past the end is no failure.
// Clears the end-of-file mark.
GRIDKIT_API int32_t gkf_fseeko(gkf_Stream* stream, int64_t offset, int32_t origin);

// Reads up to `count` items of `size` bytes and moves past them; gives the whole items read.
// Fewer than asked come at the end of the file, which sets the end-of-file mark, and on a read
// error, which does not.
GRIDKIT_API size_t gkf_fread(void* buffer, size_t size, size_t count, gkf_Stream* stream);

// Non-zero when the last read came short because the file ended; 0 for a null handle.
GRIDKIT_API int32_t gkf_feof(gkf_Stream* stream);

// How many bytes the stream has read from the file so far; 0 for a null handle.
GRIDKIT_API int64_t gkf_StreamBytesRead(const gkf_Stream* stream);

#ifdef __cplusplus
}
#endif

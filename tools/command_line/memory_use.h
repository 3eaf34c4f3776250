#pragma once

// How a program that goes through images uses memory. These are settings of the whole process, so
// the library leaves them alone and a program's main() makes them, before anything else runs.
//
// Freed memory stays with the process, up to 64 MiB and in blocks up to 32 MiB: tiles of images
// come and go by the megabyte, and what goes back to the system comes again page by page. GDAL
// keeps at most 128 MiB of tiles, unless the environment variable GDAL_CACHEMAX says otherwise; its
// own default is a twentieth of the machine.
void settle_memory_use();

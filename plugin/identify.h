#pragma once

#include <cstdint>

// Whether a file is an annotation of this format, by its first seven lines: the third must name the
// product level and the fourth the mission, or a sister's where the preference allows it; the
// seventh holds the version text. Each read takes at most 254 characters, so a longer line counts
// as several. Nothing of the XML is looked at.
//
// 0 for a recognised file, else -1. The version index is written only when a version text is found;
// of several the last in the order of the enumeration wins. That a file is not ours is no error:
// its report is dropped.
std::int32_t tsx_FileIdentify(const char* path, std::int32_t* versionIndex);

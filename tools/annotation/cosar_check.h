#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/annotation/annotated_images.h"
#include "tools/annotation/cosar_header.h"
#include "tools/annotation/image_finding.h"

// Where a COSAR file's header disagrees with the annotation, with itself or with the file's size.
// The annotation is taken to mean one burst, whose records hold its samples and nothing more, as
// readers take it that go by the annotation alone. `path` is for the findings only.
std::vector<ImageFinding> check_cosar(const std::string& path, const CosarHeader& header,
                                      std::uint64_t file_bytes, const AnnotatedImages& annotated);

// "COSAR, 1 burst of 300 lines x 260 samples, records of 1048 bytes", or "2 bursts, the first of
// ...". The header has a burst.
std::string describe_cosar(const CosarHeader& header);

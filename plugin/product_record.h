#pragma once

#include "record/tsx_file.h"

// A new record, all fields cleared, with its two sub-records; null without memory. Its life: under
// construction in the open, then registered in handlepool under its fileName, until the registry
// calls tsx_ReleaseRecord. A record whose open failed late is never registered and never released.
TsxFile* tsx_CreateRecord();

// Releases a record in a fixed order: image files, name lists, document, annotation, arrays of the
// sensor model, sub-records, record. The first step that fails ends it: its report is neither
// printed nor deleted and what was not yet released stays allocated. The path and the map
// projection's name are never freed, a small loss per product that is meant.
void fileFree(TsxFile* record);

// The registry's callback: releases a record that is not null. Always 0.
std::int32_t tsx_ReleaseRecord(void* record);

// What every test under a sanitizer takes as given. ASAN_OPTIONS, LSAN_OPTIONS and TSAN_OPTIONS
// still override it.

// Allocations that are too large are to fail as they do without the sanitizer.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}

// Losses that are part of the plug-in's behaviour; docs/decisions.md names each. Every line names
// the function that makes the lost block, so that anything else a product's life loses is still
// found.
extern "C" const char* __lsan_default_suppressions() {
  return
      // The text of a run counter is never freed.
      "leak:tsx_RaiseCounter\n"
      // The path and the map projection's name outlive their record.
      "leak:kept_copy_of_path\n"
      "leak:tsx_ReadGeneralParms\n"
      // Lists of layer names that the open asks for.
      "leak:gkl_LayerGetNames\n"
      // An unfinished record is never released, nor what it holds.
      "leak:tsx_CreateRecord\n"
      // The second open of a registered path leaves its own handle open.
      "leak:gkf_Open\n"
      // The rectangle and the staging buffer of a failing detected read.
      "leak:read_detected\n";
}

// GDAL is not built for ThreadSanitizer. While it starts, once and on one thread, it takes two
// locks of its own in both orders.
extern "C" const char* __tsan_default_suppressions() {
  return "deadlock:libgdal.so\n";
}

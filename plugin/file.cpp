#include <cstdint>

#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "record/run_counters.h"
#include "record/tsx_file.h"

int32_t tsxFileClose(TsxFile* file) {
  if (file == nullptr) return 0;
  tsx_RaiseCounter(s_tsxFileCloseCount, "\n s_tsxFileCloseCount: %d \n", nullptr);
  // The record dies when the registry calls back; one that was never registered is not found.
  pool_RemoveFileHandleFromList(file->fileName, 0);
  return 0;
}

// No real time stamp: the value only tells whether the sensor model holds data.
int32_t tsxFileDataModTimeGet(TsxFile* file, const char*, int64_t* time) {
  *time = file->sarModel->num_samples == 0 ? -1 : 0;
  return 0;
}

#pragma once

#include "gridkit/export.h"
#include "gridkit/report.h"

#ifdef __cplusplus
extern "C" {
#endif

// The toolkit's instance token: what operations on raster files ask for. It is never null, belongs
// to the toolkit and needs no release. Layers refuse any other token.
typedef struct gki_Instance gki_Instance;
GRIDKIT_API gki_Instance* gki_GetInit(gke_Report** err);

#ifdef __cplusplus
}
#endif

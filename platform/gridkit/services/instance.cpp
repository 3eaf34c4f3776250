#include "gridkit/instance.h"

struct gki_Instance {};

gki_Instance* gki_GetInit(gke_Report**) {
  static gki_Instance instance;
  return &instance;
}

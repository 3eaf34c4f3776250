// A library with one of the functions only.
extern "C" __attribute__((visibility("default"))) int brokenInstanceDescriptionGet(char**) {
  return -1;
}

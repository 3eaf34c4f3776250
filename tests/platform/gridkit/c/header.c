/* The header is C99 and needs nothing before it; struct members lie where the reviewed table says.
 */
#include "gridkit/gridkit.h"

#include <stdio.h>

#define STRUCT(name) printf("%s %zu\n", #name, sizeof(name))
#define MEMBER(name, member) \
  printf("  %s %zu %zu\n", #member, offsetof(name, member), sizeof(((name*)0)->member))

int main(void) {
#include "struct_members.inc"
  return gridkit_version_number() == GRIDKIT_VERSION_NUMBER ? 0 : 1;
}

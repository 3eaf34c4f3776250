#pragma once

// operator new and delete of a test program: they count, and one chosen call can be made to fail.
// Linked in, they replace the program's, and so those of every library that it loads.
struct CountedNew {
  // Which calls count, by the place that they return to and whether they may throw; none while
  // null. Must not allocate.
  bool (*counts)(const void* caller, bool may_throw);
  long calls;    // counted calls
  long fail_at;  // the number of the counted call that fails, from 1; 0 for none
  long live;     // blocks of counted calls that are not yet given back
};
CountedNew& counted_new();

#pragma once

#include <cstddef>

// What a test program has on the heap, counted at every allocation of the whole process: its own,
// the host's, the plug-in's and those of the libraries beneath. Bytes are those that were asked
// for.
struct HeapUse {
  long blocks = 0;
  long bytes = 0;

  // A block of so many bytes more.
  void add(std::size_t size) {
    blocks += 1;
    bytes += static_cast<long>(size);
  }

  friend HeapUse operator-(const HeapUse& a, const HeapUse& b) {
    return {a.blocks - b.blocks, a.bytes - b.bytes};
  }
  friend bool operator==(const HeapUse&, const HeapUse&) = default;
};

HeapUse heap_in_use();

#pragma once

#include <cstddef>

#include "gridkit/report.h"
#include "support/ledger.h"

// What the files of the tests' toolkit share.
namespace fake {

// Whatever the toolkit handed out. What the plug-in loses on purpose ends with the next reset.
Ledger& ledger();

template <class T>
T* lend(T* object, const char* kind) {
  ledger().lend(object, kind, [](void* ended) { delete static_cast<T*>(ended); });
  return object;
}

// Ends what came back; what comes back twice, or was never handed out, fails the test.
void take_back(void* object);

// A block and a text of the heap, counted.
void* new_block(std::size_t size, const char* kind);
char* new_text(const char* text, const char* kind = "text");

// Counts a call of an operation; whether its turn to fail has come.
bool fails(const char* operation);

// The same, and the failure reported.
bool failed(const char* operation, gke_Report** err);

void report(const char* operation, gke_Report** err, const char* message);

}  // namespace fake

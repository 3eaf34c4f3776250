#pragma once

#include <map>
#include <string>
#include <vector>

// A product's whole life on the tests' own toolkit, from the format's descriptors to the close, and
// what came of each step.
struct LifeStep {
  std::string name;
  std::string outcome;  // what the host sees of it
  int calls = 0;        // of the operation that is watched, by the end of the step
};

// Lives the life of a product of the variant (SSC, MGD, GEC or EEC) with two images. Steps that
// need what an earlier one did not give are left out. The name of an operation is counted along.
std::vector<LifeStep> live(const std::string& variant, const std::string& watched);

// What is allocated on the plug-in's side and in the toolkit, by kind: those of outstanding(),
// "record" (the blocks of open products' records), "document".
std::map<std::string, int> left_allocated();

// Operator new of the plug-in's records is watched under this name.
inline constexpr const char* record_allocation = "operator new of a record";
void fail_record_allocation(int call);

#pragma once

#include <map>
#include <string>
#include <utility>

// What was handed out and has not come back, each thing with its kind and with what ends it. What
// is left ends with the ledger.
class Ledger {
 public:
  using End = void (*)(void*);

  Ledger() = default;
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;
  ~Ledger() { clear(); }

  void lend(void* object, const char* kind, End ender) { lent_[object] = {kind, ender}; }

  // Ends a thing that came back; false when it was not out.
  bool end(void* object) {
    const auto found = lent_.find(object);
    if (found == lent_.end()) return false;
    found->second.end(object);
    lent_.erase(found);
    return true;
  }

  // Strikes out what somebody else ends; false when it was not out.
  bool strike(void* object) { return lent_.erase(object) > 0; }

  // How many things of each kind are out.
  std::map<std::string, int> outstanding() const {
    std::map<std::string, int> counts;
    for (const auto& [object, thing] : lent_) ++counts[thing.kind];
    return counts;
  }

  // What ends a thing may strike it out.
  void clear() {
    for (const auto& [object, thing] : std::exchange(lent_, {})) thing.end(object);
  }

 private:
  struct Thing {
    const char* kind;
    End end;
  };
  std::map<void*, Thing> lent_;
};

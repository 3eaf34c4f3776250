#pragma once

#include <iostream>
#include <map>
#include <string>

// How many faults a sweep injected, by operation, told in one line on standard output.
class FaultCount {
 public:
  void add(const std::string& operation, long points = 1) {
    by_operation_[operation] += points;
    total_ += points;
  }
  long total() const { return total_; }
  bool has(const std::string& operation) const { return by_operation_.contains(operation); }

  void print(const std::string& of) const {
    std::cout << of << ": fault points tried: " << total_ << " (";
    const char* separator = "";
    for (const auto& [operation, points] : by_operation_) {
      std::cout << separator << operation << ": " << points;
      separator = ", ";
    }
    std::cout << ")\n";
  }

 private:
  std::map<std::string, long> by_operation_;
  long total_ = 0;
};

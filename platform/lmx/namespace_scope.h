#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lmx {

// The namespace declarations in force at the reader's place.
class c_xml_local {
 public:
  // Takes a declaration `prefix` = `uri` (empty prefix: the default namespace) of the element at
  // nesting depth `depth`.
  void declare(std::string_view prefix, std::string_view uri, std::size_t depth) {
    declarations_.push_back({std::string(prefix), std::string(uri), depth});
  }

  // Drops the declarations of elements at `depth` and deeper.
  void leave(std::size_t depth) {
    while (!declarations_.empty() && declarations_.back().depth >= depth) declarations_.pop_back();
  }

  std::size_t size() const { return declarations_.size(); }
  void shrink(std::size_t size) {
    while (declarations_.size() > size) declarations_.pop_back();
  }

  // The namespace bound to a prefix, innermost first; empty when there is none.
  std::string_view uri_of(std::string_view prefix) const {
    for (auto d = declarations_.rbegin(); d != declarations_.rend(); ++d) {
      if (d->prefix == prefix) return d->uri;
    }
    return {};
  }

 private:
  struct Declaration {
    std::string prefix;
    std::string uri;
    std::size_t depth;
  };
  std::vector<Declaration> declarations_;
};

}  // namespace lmx

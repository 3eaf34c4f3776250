#pragma once

#include <string>
#include <string_view>

namespace gridkit {

// While a product is being opened: the folder that everything opened on this thread must lie in.
// Names inside a product are made by strangers; without this one such as "../../secret" would reach
// any file of the user's. Paths are compared as they are spelled, with "." and ".." resolved but
// symbolic links not looked at: a user may link an image into the product's folder from elsewhere.
// A scope within a scope takes its place. The preference "allow_outside_files" of the group
// "gridkit" lets everything be opened when it is not 0.
//
// Plug-ins that are called without a scope open what they are told to.
class OpenScope {
 public:
  // The folder is that of the product's own file.
  explicit OpenScope(const std::string& product);
  OpenScope(const OpenScope&) = delete;
  OpenScope& operator=(const OpenScope&) = delete;
  ~OpenScope();

  // The first refusal as a sentence, empty while there is none.
  const std::string& refusal() const { return refusal_; }

 private:
  friend std::string refusal_to_open(const char* path);
  bool holds(std::string_view path) const;

  std::string folder_;  // absolute, with its closing separator
  std::string refusal_;
  OpenScope* before_;
};

// Why a path must not be opened on this thread now; empty when it may. The scope keeps the first
// such word.
std::string refusal_to_open(const char* path);

// A path as far as a message shows it.
std::string shown_path(std::string_view path);

}  // namespace gridkit

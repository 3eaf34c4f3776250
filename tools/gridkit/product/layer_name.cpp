#include "tools/gridkit/product/layer_name.h"

#include <algorithm>

#include "tools/command_line/suggestion.h"

std::string unknown_layer(const gridkit::Product& product, const std::string& name) {
  const auto names = product.layer_names();
  if (std::find(names.begin(), names.end(), name) != names.end()) return {};
  std::string message =
      "no layer \"" + name + '"' + did_you_mean(name, names) + "\n  the layers are";
  for (const std::string& known : names) message += ' ' + known;
  return message;
}

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The names by which programs ask for a product, one of its images, or what is made of one:
//   GRIDKIT:"PATH"   GRIDKIT:"PATH":PART   GRIDKIT:"PATH":PART:QUANTITY
// The quotes may be left out; within them a backslash hides a quote or a backslash.
namespace gridkit_gdal {

// What a band's pixels are.
enum class Quantity {
  samples,    // as they are in their file
  amplitude,  // the modulus
  phase,
  intensity,
  beta0,
  sigma0,
  gamma0
};

// The word of a quantity in a name, such as "BETA0"; empty for samples.
std::string_view word_of(Quantity quantity);

// The quantity that a word stands for, in capitals or not.
std::optional<Quantity> quantity_named(std::string_view word);

struct Connection {
  std::string path;  // of the product's folder or annotation
  std::string part;  // an image or a layer by its name; empty: the product as such
  Quantity quantity = Quantity::samples;

  bool operator==(const Connection&) const = default;
};

// Whether a name begins as those of this driver do.
bool has_prefix(std::string_view name);

// What a name with the prefix may mean, the likeliest first: a path without quotes may have colons
// of its own, so it is taken as long as possible first. Never empty. Throws std::invalid_argument
// with a sentence for a name that means nothing.
std::vector<Connection> readings_of(std::string_view name);

// The name of a connection, with the path in quotes. It reads back as that connection alone.
std::string name_of(const Connection& connection);

}  // namespace gridkit_gdal

#pragma once

// The calls of the toolkit in the open of a product, by their number and what they are for, so that
// a test which makes one fail can name it.

// gkm_HeapMalloc.
namespace open_allocation {
inline constexpr int line_of_recognition = 1;
inline constexpr int first_state_vectors = 2;  // six arrays, of products with a sensor model
inline constexpr int last_state_vectors = 7;
inline constexpr int directory = 8;  // where there is a sensor model
}  // namespace open_allocation

// gks_Sprintf.
namespace open_text {
inline constexpr int path_of_recognition = 1;
inline constexpr int counter = 2;
inline constexpr int first_image = 3;  // one an image
}  // namespace open_text

// gks_Duplicate.
namespace open_copy {
inline constexpr int path = 1;
inline constexpr int map_projection = 2;
}  // namespace open_copy

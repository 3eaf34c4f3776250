#pragma once

// What tells an annotation of this format within its first lines.

inline constexpr const char* product_level_text = "Level 1B Product";  // in the third line
inline constexpr const char* mission_text = "TSX-1";                   // in the fourth

#pragma once

// What tells an annotation of this format within its first lines.

inline constexpr const char* product_level_text = "Level 1B Product";  // in the third line
inline constexpr const char* mission_text = "TSX-1";                   // in the fourth

// Satellites whose products have the same form. The plug-in takes them where the number preference
// "sister_satellites" of the group "tsx" is set and not 0.
inline constexpr const char* sister_mission_texts[] = {"TDX-1", "PAZ-1"};

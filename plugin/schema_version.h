#pragma once

#include <cstdint>

// Which schema classes bind an annotation, by the version text found in it. Six is no match.
enum SchemaIndex : std::int32_t {
  schema_text_34 = 0,
  schema_text_35 = 1,
  schema_text_36 = 2,
  schema_text_37 = 3,
  schema_text_40 = 4,
  schema_text_41 = 5,
  schema_text_none = 6
};

// The texts that are sought, by index. Of several in a line the last in this order counts.
inline constexpr const char* schema_version_texts[schema_text_none] = {"3.4", "3.5", "3.6",
                                                                       "3.7", "4.0", "4.1"};

// The schema whose classes serve a text: those of 3.5 serve 3.6 too, those of 4.0 also 3.7 and 4.1.
inline constexpr const char* schema_of_text[schema_text_none] = {"3.4", "3.5", "3.5",
                                                                 "4.0", "4.0", "4.0"};

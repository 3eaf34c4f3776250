#include "plugin/document.h"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "plugin/schema_version.h"

namespace {

// A file that does not exist ends each constructor at once, and the object tells its class.
TEST(Document, EachVersionTextHasItsClasses) {
  const struct {
    std::int32_t index;
    const std::type_info& type;
  } cases[] = {{schema_text_34, typeid(version34::c_version34)},
               {schema_text_35, typeid(version35::c_version35)},
               {schema_text_36, typeid(version35::c_version35)},
               {schema_text_37, typeid(version40::c_version40)},
               {schema_text_40, typeid(version40::c_version40)},
               {schema_text_41, typeid(version40::c_version40)}};
  for (const auto& expected : cases) {
    lmx::elmx_error error = lmx::error_none;
    const std::unique_ptr<level1bProductBase> document(
        tsx_ConstructDocument(expected.index, "nowhere.xml", &error));
    ASSERT_NE(document, nullptr) << expected.index;
    const level1bProductBase& object = *document;
    EXPECT_EQ(typeid(object), expected.type) << expected.index;
    EXPECT_EQ(error, lmx::error_cannot_open) << expected.index;
  }
}

TEST(Document, AnIndexOutsideTheTextsConstructsNothing) {
  for (const std::int32_t index : {std::int32_t{schema_text_none}, 7, -1}) {
    lmx::elmx_error error = lmx::error_cannot_open;
    EXPECT_EQ(tsx_ConstructDocument(index, "nowhere.xml", &error), nullptr);
    EXPECT_EQ(error, lmx::error_cannot_open) << "as it was";
  }
}

}  // namespace

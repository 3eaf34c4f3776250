// What keeps a document that binds from being written: told with its path, before writing ends the
// process over it.

#include <gtest/gtest.h>

#include <string>

#include "binding/document.h"
#include "binding/writable.h"
#include "level1bProduct40/version40.h"
#include "tests/schema/cases.h"
#include "tests/schema/general_header.h"

namespace {

using namespace version40;
using binding::find_unwritable;

std::string told(const binding::ClassDescription& description, const void* object) {
  const auto found = find_unwritable(description, object, "");
  return found ? found->path + " " + found->why : "";
}

std::string told_of(const c_version40& root) {
  return told(c_version40::s_description, &root);
}

TEST(Writable, IsADocumentThatIsWhole) {
  c_version40 root;
  ASSERT_EQ(root.unmarshal(general_header), 0);
  EXPECT_EQ(told_of(root), "");
  root.set_chirpSlope("UP");
  EXPECT_EQ(told_of(root), "");
  root.append_imagingMode("SM");
  EXPECT_EQ(told_of(root), "");
}

TEST(Writable, IsNotAnEmptyListAtTheRoot) {
  c_version40 root;
  ASSERT_EQ(root.unmarshal(std::string("<imagingMode/>")), 0);
  EXPECT_EQ(told_of(root), "/imagingMode has nothing in its list");
}

TEST(Writable, IsNotARootThatHoldsNothing) {
  EXPECT_EQ(told_of(c_version40()), " holds none of its elements");
}

TEST(Writable, NamesTheFirstMemberThatIsMissing) {
  c_version40 root;
  root.assign_generalHeader(header());
  root.get_generalHeader().get_generationSystem().reset();
  root.get_generalHeader().get_generationSystem().set_version("1");
  EXPECT_EQ(told_of(root), "/generalHeader/generationSystem has no text");
  root.get_generalHeader().reset();
  EXPECT_EQ(told_of(root), "/generalHeader has no attribute fileName");
  root.get_generalHeader().set_fileName("f");
  EXPECT_EQ(told_of(root), "/generalHeader has no <itemName>");
}

TEST(Writable, NamesAListThatCameShortAndOneWithoutEntries) {
  using Info = c_level1Product::c_productInfo;
  const Info::c_acquisitionInfo::c_polarisationList polarisations;
  EXPECT_EQ(told(polarisations.s_description, &polarisations), " has no <polLayer>");
  // A copy's required members are present, whatever they hold.
  const Info::c_productVariantInfo empty;
  const Info::c_productVariantInfo variants(empty);
  EXPECT_EQ(told(variants.s_description, &variants), " has no <productVariant>");
}

TEST(Writable, LooksIntoChoices) {
  using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;
  ModeInfo info;
  EXPECT_EQ(told(info.s_description, &info), " holds none of its elements");
  info.get_scanSAR();
  EXPECT_EQ(told(info.s_description, &info).substr(0, 9), "/scanSAR ");
}

// Whatever is told to be writable is: no class, empty or as a copy makes it, is fatal.
TEST(Writable, AgreesWithWhatTheClassesAsk) {
  for (const auto& [version, classes] : cases::all_versions()) {
    for (const auto& [name, description] : classes.all()) {
      const binding::OwnedObject empty(*description);
      if (!binding::is_occurs_ok(*description, empty.get())) {
        EXPECT_TRUE(find_unwritable(*description, empty.get(), "")) << version << ' ' << name;
      }
      const binding::OwnedObject copied(*description);
      binding::copy(*description, copied.get(), empty.get());
      if (find_unwritable(*description, copied.get(), "")) continue;
      std::string text;
      EXPECT_EQ(binding::write_text(*description, copied.get(), &text), 0) << name;
    }
  }
}

}  // namespace

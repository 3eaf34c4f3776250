// The document's root, which holds whichever global element a document has.

#include <gtest/gtest.h>

#include <sstream>

#include "binding/document.h"
#include "binding/engine.h"
#include "binding/root.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct40/version40.h"
#include "tests/schema/general_header.h"

namespace {

using namespace version40;
using lmx::elmx_error;

TEST(Root, HoldsWhicheverGlobalElementTheDocumentHas) {
  c_version40 root;
  EXPECT_EQ(root.getchosen(), 9);
  EXPECT_EQ(root.unmarshal(std::string("<chirpSlope>UP</chirpSlope>")), 0);
  EXPECT_EQ(root.getchosen(), c_version40::e_chirpSlope);
  EXPECT_EQ(root.getenum_chirpSlope(), 1);
  EXPECT_TRUE(root.is_occurs_ok());
  root.reset();
  EXPECT_EQ(root.getchosen(), 9);
}

TEST(Root, AnUnknownRootIsThirtyOne) {
  version34::c_version34 root;
  EXPECT_EQ(root.unmarshal(std::string("<productInfo/>")), 31);
  EXPECT_EQ(root.unmarshal("/nonexistent.xml"), 1);
}

TEST(Root, KeepsATextOutsideItsSetUntilItEnds) {
  version34::c_version34 root;
  EXPECT_EQ(root.unmarshal(std::string("<chirpSlope>up</chirpSlope>")), 38);
  EXPECT_EQ(root.get_chirpSlope(), "up");
}

TEST(Root, TakesAnEmptyList) {
  c_version40 root;
  EXPECT_EQ(root.unmarshal(std::string("<imagingMode/>")), 0);
  EXPECT_EQ(root.getchosen(), 6);
  EXPECT_EQ(root.size_imagingMode(), 0U);
  std::string text = "old";
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") << "an empty list writes nothing";
  const c_version40 copy(root);
  EXPECT_EQ(copy.getchosen(), 9) << "an empty list is copied as nothing chosen";
}

TEST(Root, ListsWorkWhileTheyAreChosen) {
  c_version40 root;
  EXPECT_EQ(root.append_imagingMode("SM"), 0);
  EXPECT_TRUE(root.appendenum_imagingMode(e_SL));
  EXPECT_EQ(root.size_imagingMode(), 2U);
  EXPECT_EQ(root.get_imagingMode(1), "SL");
  EXPECT_EQ(root.set_imagingMode(9, "SC"), 0);
  root.delete_imagingMode(0);
  EXPECT_EQ(root.getenum_imagingMode(0), e_SL);
  std::string text;
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_TRUE(text.ends_with("<imagingMode>SL SC</imagingMode>\n"));
  root.get_level1Product();
  EXPECT_EQ(root.size_imagingMode(), 0U) << "another member is chosen";
}

TEST(Root, SettingATextReleasesWhatWasHeld) {
  c_version40 root;
  root.get_level1Product();
  EXPECT_FALSE(root.setenum_polLayer(e_SRA));
  EXPECT_FALSE(root.appendenum_imagingMode(e_HH));
  EXPECT_EQ(root.getchosen(), c_version40::e_level1Product) << "a foreign number changes nothing";
  EXPECT_EQ(root.set_polLayer("HV"), 0);
  EXPECT_EQ(root.getchosen(), c_version40::e_polLayer);
  EXPECT_FALSE(root.setenum_polLayer(e_SRA));
  EXPECT_TRUE(root.setenum_polLayer(e_VV));
  const c_version40 copy(root);
  EXPECT_EQ(copy.get_polLayer(), "VV");
  std::string text;
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_TRUE(text.ends_with("<polLayer>VV</polLayer>\n"));
}

TEST(Root, ATextOutsideItsSetIsCopiedAsNothingChosen) {
  c_version40 root;
  EXPECT_EQ(root.set_chirpSlope("SIDEWAYS"), 0);
  EXPECT_EQ(root.getenum_chirpSlope(), 0);
  const c_version40 copy(root);
  EXPECT_EQ(copy.getchosen(), 9);
  root.append_imagingMode("foreign");
  const c_version40 second(root);
  EXPECT_EQ(second.getchosen(), 9);
}

TEST(Root, CopiesAndSwapsAnObject) {
  c_version40 root;
  ASSERT_EQ(root.unmarshal(general_header), 0);
  c_version40 copy(root);
  root.reset();
  ASSERT_EQ(copy.getchosen(), 0);
  EXPECT_EQ(std::as_const(copy).get_generalHeader().get_mission(), "m");
  root.swap(copy);
  EXPECT_EQ(copy.getchosen(), 9);
  copy = root;
  EXPECT_EQ(std::as_const(copy).get_generalHeader().get_source(), "s");
}

TEST(Root, WritingAChosenMemberWithoutItsObjectIsFortyFive) {
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  for (const int number :
       {c_version40::e_file, c_version40::e_polLayer, c_version40::e_imagingMode}) {
    EXPECT_EQ(binding::write_root_content(c_version40::s_description, {number, nullptr}, writer),
              45);
  }
  EXPECT_EQ(binding::write_root_content(c_version40::s_description, {9, nullptr}, writer), 7);
  EXPECT_EQ(out.str(), "");
}

TEST(RootDeathTest, AssertsWithTheRootsTexts) {
  c_version40 root;
  EXPECT_DEATH(std::as_const(root).get_level1Product(), "chosen == e_level1Product");
  std::string text;
  EXPECT_DEATH(root.marshal(&text), "is_occurs_ok\\(\\)");
  root.append_imagingMode("SM");
  EXPECT_DEATH(root.get_imagingMode(1), "a_index < u.m_imagingMode->size\\(\\)");
  EXPECT_DEATH(root.delete_imagingMode(1), "a_index < u.m_imagingMode->size\\(\\)");
}

TEST(Root, KnowsItsMembersByTheReadersPlace) {
  const std::string known = "<file/>";
  lmx::c_xml_reader_memory reader(known.data(), known.size());
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  EXPECT_TRUE(c_version40::is_member(reader, "file"));
  EXPECT_EQ(reader.current_event, 29);
  const std::string foreign = "<other/>";
  lmx::c_xml_reader_memory second(foreign.data(), foreign.size());
  second.get_element_event(nullptr, &error, &second.current_name);
  EXPECT_FALSE(c_version40::is_member(second, "other"));
  EXPECT_EQ(second.current_event, 7) << "as it was";
  second.current_event = 6;
  EXPECT_FALSE(c_version40::is_member(second, "other"));
}

// An element's start: not classified yet, unknown, or classified by another map, from 12 on.
TEST(Root, AsksOnlyAtAnElementsStart) {
  const std::string document = "<file/>";
  for (int event = 0; event <= 20; ++event) {
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    elmx_error error{};
    reader.get_element_event(nullptr, &error, &reader.current_name);
    reader.current_event = event;
    const bool at_start = event == 7 || event == 1 || event >= 12;
    EXPECT_EQ(c_version40::is_member(reader, "file"), at_start) << event;
    EXPECT_EQ(reader.current_event, at_start ? 29 : event);
  }
}

// The bracket that ends the start tag of a text or list is indented like the tag, which shows below
// the outermost level only.
TEST(Root, WritesTextsAndListsAtAnyDepth) {
  const auto written = [](const c_version40& root) {
    std::ostringstream out;
    lmx::c_xml_writer writer(out, 0, "\t", "\n");
    writer.depth = 1;
    EXPECT_EQ(root.marshal(writer, "ignored"), 0);
    return out.str();
  };
  c_version40 root;
  root.set_polLayer("HV");
  EXPECT_EQ(written(root), "\t<polLayer\t>HV</polLayer>\n");
  root.append_imagingMode("SM");
  root.append_imagingMode("SL");
  EXPECT_EQ(written(root), "\t<imagingMode\t>SM SL</imagingMode>\n");
}

}  // namespace

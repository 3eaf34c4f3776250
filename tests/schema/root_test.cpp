// The document's root, which holds whichever global element a document has.

#include <gtest/gtest.h>

#include <sstream>

#include "binding/document.h"
#include "binding/engine.h"
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

TEST(Root, ListsTakeTextsAtAnyPlaceAndLoseThem) {
  c_version40 root;
  root.append_polarisationMode("SINGLE");
  EXPECT_EQ(root.insert_polarisationMode(0, "DUAL"), 0);
  EXPECT_EQ(root.insert_polarisationMode(9, "foreign"), 0) << "past the end it appends";
  EXPECT_TRUE(root.insertenum_polarisationMode(1, e_QUAD));
  EXPECT_FALSE(root.insertenum_polarisationMode(1, e_HH)) << "of another set";
  ASSERT_EQ(root.size_polarisationMode(), 4U);
  EXPECT_EQ(root.get_polarisationMode(0), "DUAL");
  EXPECT_EQ(root.get_polarisationMode(1), "QUAD");
  EXPECT_EQ(root.get_polarisationMode(2), "SINGLE");
  EXPECT_EQ(root.getenum_polarisationMode(3), e_no_match);
  EXPECT_TRUE(root.setenum_polarisationMode(3, e_TWIN)) << "in the place of what stood there";
  EXPECT_FALSE(root.setenum_polarisationMode(3, e_HH));
  EXPECT_TRUE(root.setenum_polarisationMode(7, e_DUAL)) << "past the end it appends";
  ASSERT_EQ(root.size_polarisationMode(), 5U);
  EXPECT_EQ(root.get_polarisationMode(3), "TWIN");
  EXPECT_EQ(root.getenum_polarisationMode(4), e_DUAL);
  root.clear_polarisationMode();
  EXPECT_EQ(root.size_polarisationMode(), 0U);
  EXPECT_EQ(root.getchosen(), c_version40::e_polarisationMode) << "an empty list is held";
  root.clear_polarisationMode();
  EXPECT_EQ(root.size_polarisationMode(), 0U);
}

// A caller's error code is its own until there is something to tell.
TEST(Root, LeavesTheCodeAsItWasWhereATextOrAListIsRead) {
  const auto read = [](const std::string& document, lmx::elmx_error* error) {
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    elmx_error event_error{};
    reader.get_element_event(nullptr, &event_error, &reader.current_name);
    c_version40 root;
    return root.unmarshal(reader, &reader.current_name, error);
  };
  elmx_error error = lmx::error_nothing_read;
  EXPECT_TRUE(read("<chirpSlope>UP</chirpSlope>", &error));
  EXPECT_EQ(error, lmx::error_nothing_read);
  EXPECT_TRUE(read("<imagingMode>SM SL</imagingMode>", &error));
  EXPECT_TRUE(read("<imagingMode/>", &error));
  EXPECT_EQ(error, lmx::error_nothing_read);
  EXPECT_FALSE(read("<chirpSlope>SIDEWAYS</chirpSlope>", &error));
  EXPECT_EQ(error, lmx::error_not_in_enumeration);
  EXPECT_TRUE(read(general_header, &error)) << "an object's read is the code";
  EXPECT_EQ(error, 0);
  EXPECT_FALSE(read("<other/>", &error));
  EXPECT_EQ(error, lmx::error_no_choice_present);
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
  binding::ClassDescription description = c_version40::s_description;
  description.choice_offset = 0;
  const auto written = [&](const binding::Choice& choice) {
    return binding::write_content(description, &choice, writer);
  };
  for (const int number :
       {c_version40::e_file, c_version40::e_polLayer, c_version40::e_imagingMode}) {
    EXPECT_EQ(written({number, nullptr}), 45);
  }
  EXPECT_EQ(written({9, nullptr}), 7);
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
  EXPECT_EQ(second.current_event, lmx::event_start) << "as it was";
  second.current_event = lmx::event_end;
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
    const bool at_start = event == lmx::event_start || event == lmx::event_unknown || event >= 12;
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

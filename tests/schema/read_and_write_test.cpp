// The annotation classes read from texts and files and written back.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "binding/document.h"
#include "binding/engine.h"
#include "binding/storage.h"
#include "level1bProduct40/version40.h"
#include "tests/schema/general_header.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace version40;
using lmx::elmx_error;

TEST(Reading, OutOfOrderNamesTheExpectedElement) {
  c_generalHeader h;
  const std::string text = "<generalHeader fileName=\"f\"><mission>m</mission></generalHeader>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  EXPECT_EQ(h.unmarshal(reader), 21);
  EXPECT_EQ(reader.diagnostic()->name, "itemName");
  EXPECT_EQ(reader.diagnostic()->path, "/generalHeader");
  EXPECT_EQ(reader.diagnostic()->found, "<mission>");
  EXPECT_EQ(reader.diagnostic()->expected, "<itemName>");
}

// After each child the reader knows the names from that child on: one that is past is unknown, the
// child's own is not.
TEST(Reading, ForgetsTheNamesThatArePast) {
  const auto event_after = [](const std::string& children) {
    c_generalHeader h;
    const std::string text = "<generalHeader fileName='f'>" + children + "</generalHeader>";
    lmx::c_xml_reader_memory reader(text.data(), text.size());
    EXPECT_EQ(h.unmarshal(reader), 21);
    return reader.current_event;
  };
  const std::string name = "<itemName>i</itemName>";
  EXPECT_EQ(event_after(name + "<mission>m</mission>" + name), 1);
  EXPECT_GE(event_after(name + name), 12);
}

TEST(Reading, ValueFaultsNameTheWholePath) {
  c_dblPolynom p;
  const std::string text = "<dblPolynom>\n  <validityRangeMin>x</validityRangeMin></dblPolynom>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  const auto error = binding::read_document(c_dblPolynom::s_description, &p, reader);
  EXPECT_EQ(error, 35);
  EXPECT_EQ(reader.diagnostic()->path, "/dblPolynom/validityRangeMin");
  EXPECT_EQ(reader.diagnostic()->line, 2U);
  EXPECT_EQ(reader.diagnostic()->column, 3U);
  EXPECT_EQ(reader.diagnostic()->found, "\"x\"");
}

TEST(Reading, AnotherRootIsSixteen) {
  c_generalHeader h;
  EXPECT_EQ(read(h, "<file/>"), 16);
  EXPECT_EQ(read(h, "<generalHeader xmlns='urn:x' fileName='f'/>"), 16);
}

TEST(Reading, AFileNameGivenAsTextIsParsedAsXml) {
  c_generalHeader h;
  EXPECT_EQ(h.unmarshal(std::string("/etc/hostname")), lmx::error_malformed);
  EXPECT_EQ(h.unmarshal("/nonexistent.xml"), 1);
}

TEST(Reading, ConstructorsGiveTheResult) {
  elmx_error error{};
  const c_generalHeader missing("/nonexistent.xml", &error);
  EXPECT_EQ(error, 1);
  const c_generalHeader text(general_header, &error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(text.get_mission(), "m");
  const c_generalHeader memory(general_header.data(), general_header.size(), &error);
  EXPECT_EQ(error, 0);
}

TEST(Reading, AppendsToAUsedObjectAndFindsItsAttributesTwice) {
  c_generalHeader h = header();
  EXPECT_EQ(read(h, general_header), 3) << "the flag of fileName is set already";
  c_imagingMode mode;
  EXPECT_EQ(read(mode, "<imagingMode>SM</imagingMode>"), 0);
  EXPECT_EQ(read(mode, "<imagingMode>SL</imagingMode>"), 0);
  EXPECT_EQ(mode.size_imagingMode(), 2U);
}

TEST(Reading, ATolerantPolicyGoesOnAndKeepsTheValue) {
  c_chirpSlope slope;
  const std::string text = "<chirpSlope>SIDEWAYS</chirpSlope>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  reader.set_policy([](const lmx::Diagnostic&) { return lmx::error_none; });
  EXPECT_EQ(slope.unmarshal(reader), 0);
  EXPECT_EQ(slope.get_chirpSlope(), "SIDEWAYS");
  EXPECT_TRUE(slope.is_occurs_ok());
}

TEST(Reading, AMissingBeamIsReportedTwiceUnderATolerantPolicy) {
  const std::string text = "<beamList><other/></beamList>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  std::vector<std::string> names;
  reader.set_policy([&](const lmx::Diagnostic& fault) {
    names.push_back(fault.name);
    return lmx::error_none;
  });
  c_level1Product product;
  auto& list = product.get_productInfo()
                   .get_acquisitionInfo()
                   .get_imagingModeSpecificInfo()
                   .get_scanSAR()
                   .get_beamList();
  binding::read_document(list.s_description, &list, reader);
  ASSERT_GE(names.size(), 2U);
  EXPECT_EQ(names[0], "beamID");
  EXPECT_EQ(names[1], "beamList");
}

TEST(WritingDeathTest, AMissingRequiredMemberIsFatal) {
  const c_generalHeader h;
  std::string text;
  EXPECT_DEATH(h.marshal(&text), "is_occurs_ok\\(\\)");
}

TEST(Writing, LaysElementsOutByTabs) {
  c_generalHeader h = header();
  h.set_remark("a<b");
  std::string text;
  ASSERT_EQ(h.marshal(&text), 0);
  EXPECT_EQ(text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<generalHeader fileName=\"f\">\n"
            "\t<itemName>i</itemName>\n"
            "\t<mission>m</mission>\n"
            "\t<source>s</source>\n"
            "\t<destination>d</destination>\n"
            "\t<generationSystem version=\"1\">g</generationSystem>\n"
            "\t<generationTime>2008-03-10T13:32:20Z</generationTime>\n"
            "\t<remark>a&lt;b</remark>\n"
            "</generalHeader>\n");
}

TEST(Writing, ToAFileThatCannotBeOpenedIsOne) {
  EXPECT_EQ(header().marshal("/nonexistent/x.xml"), 1);
}

TEST(Writing, ToAFullDeviceIsOne) {
  EXPECT_EQ(header().marshal("/dev/full"), 1);
}

TEST(Writing, ToAFileReplacesWhatItHeld) {
  const ScratchFolder folder;
  const auto path = folder / "header.xml";
  c_generalHeader h = header();
  h.set_remark(std::string(500, 'x'));
  EXPECT_EQ(h.marshal(path.c_str()), 0);
  h.unset_remark();
  std::string text;
  EXPECT_EQ(h.marshal(&text), 0);
  EXPECT_EQ(h.marshal(path.c_str()), 0);
  EXPECT_EQ(std::filesystem::file_size(path), text.size());
}

TEST(Writing, AFailureLeavesTheTextAsItWas) {
  // The start tag is written, then the element that is chosen but not there ends the writing.
  c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo info;
  binding::part_of<binding::Choice>(&info, info.s_description.choice_offset) = {0, nullptr};
  std::string text = "old";
  EXPECT_EQ(binding::write_text(info.s_description, &info, &text), 45);
  EXPECT_EQ(text, "old");
}

// The start tag is written, then the element that is chosen but not there ends the writing.
TEST(Writing, AFailingChildLeavesTheDepthWhereItWas) {
  c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo info;
  binding::part_of<binding::Choice>(&info, info.s_description.choice_offset) = {0, nullptr};
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "\t", "\n");
  writer.depth = 2;
  EXPECT_EQ(info.marshal(writer, "imagingModeSpecificInfo"), 45);
  EXPECT_EQ(writer.depth, 3) << "that of the child";
  EXPECT_EQ(out.str(), "\t\t<imagingModeSpecificInfo>\n");
}

TEST(Writing, ToAStreamIsTheSameText) {
  std::ostringstream out;
  std::string text;
  EXPECT_EQ(header().marshal(out), 0);
  EXPECT_EQ(header().marshal(&text), 0);
  EXPECT_EQ(out.str(), text);
}

TEST(Writing, ToAFileReadsBack) {
  const ScratchFolder folder;
  const auto path = folder / "header.xml";
  EXPECT_EQ(header().marshal(path.c_str()), 0);
  c_generalHeader back;
  EXPECT_EQ(back.unmarshal(path.c_str()), 0);
  EXPECT_EQ(back.get_destination(), "d");
}

TEST(Writing, ATextOfTokensIsTheirsWithABlankBetween) {
  c_imagingMode mode;
  mode.append_imagingMode("SM");
  mode.append_imagingMode("SL");
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(mode.marshal(writer, "imagingMode"), 0);
  EXPECT_EQ(out.str(), "<imagingMode>SM SL</imagingMode>");
}

TEST(AnyContent, IsTakenAndGivenBackAsItStands) {
  using Statistics = c_level1Product::c_processing::c_signalDataAnalysis::c_rawDataInfo::
      c_rawDataStatisticsAndCorrection;
  Statistics s;
  s.set_quantisationStatistics("<h n=\"1\">&amp;</h>");
  const Statistics copy(s);
  EXPECT_EQ(copy.get_quantisationStatistics(), "<h n=\"1\">&amp;</h>");
}

}  // namespace

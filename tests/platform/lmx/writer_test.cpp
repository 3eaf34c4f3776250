#include "lmx/writer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace lmx;

TEST(Writer, PutsTheDeclarationFirstWhereAsked) {
  std::ostringstream with;
  c_xml_writer declared(with, c_xml_writer::include_xml_decl, "\t", "\n");
  EXPECT_EQ(with.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
  std::ostringstream without;
  c_xml_writer plain(without, 0, "\t", "\n");
  EXPECT_EQ(without.str(), "");
}

TEST(Writer, IndentsByItsDepth) {
  std::ostringstream out;
  c_xml_writer writer(out, 0, "\t", "\r\n");
  writer.depth = 2;
  writer(true) << "x" << writer.line_end();
  writer(false) << "y";
  EXPECT_EQ(out.str(), "\t\tx\r\ny");
}

TEST(Writer, AnEmptyMapWritesNoNamespace) {
  const s_ns_map empty[] = {{nullptr, 0}};
  std::ostringstream out;
  c_xml_writer writer(out, 0, "", "");
  writer.conditionally_select_ns_map(empty);
  writer.conditionally_write_ns_attrs(false);
  EXPECT_EQ(out.str(), "");
}

TEST(Writer, WritesASelectedMapOnce) {
  const s_ns_map map[] = {{"urn:a&b", 2}, {nullptr, 0}};
  const s_ns_map other[] = {{"urn:other", 3}, {nullptr, 0}};
  std::ostringstream out;
  c_xml_writer writer(out, 0, "", "");
  writer.conditionally_select_ns_map(map);
  writer.conditionally_select_ns_map(other);
  writer.conditionally_write_ns_attrs(false);
  writer.conditionally_write_ns_attrs(false);
  EXPECT_EQ(out.str(), " xmlns:ns2=\"urn:a&amp;b\"");
}

TEST(Writer, ReturnsAFaultUnchanged) {
  std::ostringstream out;
  c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(writer.handle_error(error_nothing_chosen, "x", "tag", 0), error_nothing_chosen);
}

}  // namespace

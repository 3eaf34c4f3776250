#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "lmx/reader.h"
#include "tests/platform/lmx/enter.h"

namespace {

using namespace lmx;

struct Value {
  bool read;
  std::string text;
  elmx_error error;
};

Value simple_value(const std::string& document, elmx_whitespace whitespace = whitespace_preserve) {
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  Value value{};
  bool no_value = false;
  value.read = reader.get_simple_type_value("a", whitespace, &value.text, &value.error, &no_value);
  return value;
}

TEST(SimpleValue, JoinsTextCdataReferencesAndAroundComments) {
  const Value value = simple_value("<a> x<![CDATA[<y>]]>&amp;&#x41;<!-- no -->z </a>");
  EXPECT_TRUE(value.read);
  EXPECT_EQ(value.text, " x<y>&Az ");
  EXPECT_EQ(simple_value("<a> x \n y </a>", whitespace_collapse).text, "x y");
  EXPECT_EQ(simple_value("<a/>").text, "");
}

// Blanks between tags are skipped, but not those that are all of an element's content.
TEST(SimpleValue, KeepsBlanksThatAreAllThereIs) {
  for (const std::string blanks : {" ", "\n", "\n\t\t", "  \n \t\n  \n\t \n", "\t \t \t \t"}) {
    EXPECT_EQ(simple_value("<a>" + blanks + "</a>").text, blanks);
    EXPECT_EQ(simple_value("<a>" + blanks + "x\n</a>").text, blanks + "x\n");
    EXPECT_EQ(simple_value("<a>\n<!-- no -->" + blanks + "</a>").text, '\n' + blanks);
  }
  EXPECT_EQ(simple_value("<a>&#9;&#13; </a>").text, "\t\r ");
  const std::string document = "<a>\n  \n </a>";
  for (std::size_t chunk = 1; chunk <= document.size(); ++chunk) {
    c_xml_reader_memory reader(document.data(), document.size(), chunk);
    enter(reader);
    std::string value;
    EXPECT_TRUE(reader.get_element_value(&value, whitespace_preserve, true));
    EXPECT_EQ(value, "\n  \n ") << "chunks of " << chunk;
  }
}

TEST(SimpleValue, ReplacesWhatThePlaceHeld) {
  const std::string document = "<a>x</a>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  std::string value = "old";
  elmx_error error = error_malformed;
  bool no_value = true;
  EXPECT_TRUE(reader.get_simple_type_value("a", whitespace_preserve, &value, &error, &no_value));
  EXPECT_EQ(value, "x");
  EXPECT_EQ(error, error_none);
  EXPECT_FALSE(no_value);
}

TEST(SimpleValue, RefusesChildrenAndAttributes) {
  EXPECT_EQ(simple_value("<a>x<b/></a>").error, error_unreadable_element);
  EXPECT_EQ(simple_value("<a u='1'>x</a>").error, error_unknown_attribute);
  EXPECT_TRUE(simple_value("<a xmlns:q='urn:q'>x</a>").read);
}

TEST(InnerMarkup, ComesBackByteForByte) {
  const std::string inner = "<b q=\"1\"> x &amp; <c/><![CDATA[<]]> </b><!-- kept -->tail";
  const std::string document = "<a>" + inner + "</a>";
  for (std::size_t chunk = 1; chunk <= document.size(); ++chunk) {
    c_xml_reader_memory reader(document.data(), document.size(), chunk);
    enter(reader);
    std::string value;
    elmx_error error{};
    bool no_value = true;
    ASSERT_TRUE(reader.get_element_ur_value("a", &value, &error, &no_value)) << chunk;
    EXPECT_EQ(value, inner) << "chunks of " << chunk;
    EXPECT_FALSE(no_value);
  }
}

TEST(InnerMarkup, OfAnEmptyElementIsNoValue) {
  for (const char* document : {"<a/>", "<a></a>"}) {
    c_xml_reader_memory reader(document, std::strlen(document));
    enter(reader);
    std::string value = "old";
    elmx_error error{};
    bool no_value = false;
    EXPECT_TRUE(reader.get_element_ur_value("a", &value, &error, &no_value));
    EXPECT_TRUE(no_value);
    EXPECT_EQ(value, "");
  }
}

TEST(InnerMarkup, OfAnElementThatClosesItselfEndsThere) {
  const std::string document = "<x><a/><b/>tail</x>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  enter(reader);
  ASSERT_EQ(reader.current_name, "a");
  std::string value = "old";
  elmx_error error{};
  bool no_value = false;
  EXPECT_TRUE(reader.get_element_ur_value("a", &value, &error, &no_value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(no_value);
  reader.get_element_event(nullptr, &error, &reader.current_name);
  EXPECT_EQ(reader.current_name, "b") << "and the read goes on after it";
}

TEST(InnerMarkup, ComesFromAnyDocumentWhoseBytesAreUtf8) {
  for (const char* encoding : {"UTF-8", "utf-8", "US-ASCII"}) {
    const std::string document =
        std::string("<?xml version='1.0' encoding='") + encoding + "'?><a><b/></a>";
    c_xml_reader_memory reader(document.data(), document.size());
    enter(reader);
    std::string value;
    elmx_error error{};
    bool no_value = false;
    EXPECT_TRUE(reader.get_element_ur_value("a", &value, &error, &no_value)) << encoding;
    EXPECT_EQ(value, "<b/>");
  }
}

TEST(InnerMarkup, NeedsAUtf8Document) {
  const std::string document = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  std::string value;
  elmx_error error{};
  bool no_value = false;
  EXPECT_FALSE(reader.get_element_ur_value("a", &value, &error, &no_value));
  EXPECT_EQ(error, error_encoding);
}

TEST(Encodings, BecomeUtf8) {
  EXPECT_EQ(simple_value("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>").text,
            "\xC3\xA4");
  const char utf16[] = "\xFF\xFE<\0a\0>\0x\0<\0/\0a\0>\0";
  EXPECT_EQ(simple_value(std::string(utf16, sizeof utf16 - 1)).text, "x");
}

}  // namespace

#include "lmx/reader.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include "lmx/expat_parser.h"
#include "tests/platform/lmx/enter.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace lmx;

// Everything a reader reports of a document, one line a step.
std::string trace(const std::string& document, std::size_t chunk = c_xml::default_chunk) {
  c_xml_reader_memory reader(document.data(), document.size(), chunk);
  std::string log;
  std::size_t depth = 0;
  elmx_error error{};
  do {
    reader.get_element_event(nullptr, &error, &reader.current_name);
    if (error != 0) return log + "error " + std::to_string(error);
    if (reader.current_event == event_end) {
      log += "end " + reader.current_name + '\n';
      --depth;
      continue;
    }
    log += "start " + reader.current_name + '\n';
    ++depth;
    while (reader.get_attribute_event(nullptr, &error, &reader.attribute_name)) {
      if (error != 0) return log + "error " + std::to_string(error);
      std::string value;
      EXPECT_TRUE(reader.get_attribute_value(&value, whitespace_preserve));
      log += "  " + reader.attribute_name + '=' + value + '\n';
    }
    if (reader.current_event == event_end) {
      log += "closed\n";
      --depth;
    }
  } while (depth > 0);
  return log;
}

elmx_error first_fault(const std::string& document) {
  const std::string log = trace(document);
  const auto at = log.find("error ");
  return at == std::string::npos ? error_none : elmx_error(std::stoi(log.substr(at + 6)));
}

TEST(Reader, SkipsPrologCommentsAndBlanks) {
  EXPECT_EQ(trace("<?xml version=\"1.0\"?><!-- c -->\n<a>\n <?pi x?> <b/> <!-- d --> </a>"),
            "start a\nstart b\nclosed\nend a\n");
}

TEST(Reader, TellsSelfClosedFromEmpty) {
  EXPECT_EQ(trace("<a><b/><c></c></a>"), "start a\nstart b\nclosed\nstart c\nend c\nend a\n");
}

TEST(Reader, GivesTheSameWhereverChunksEnd) {
  const std::string document =
      "<a x=\"1 &lt; 2\"><bb y='&#65;'/><c>\n</c><!-- long comment --></a>";
  const std::string whole = trace(document);
  for (std::size_t chunk = 1; chunk <= document.size(); ++chunk) {
    EXPECT_EQ(trace(document, chunk), whole) << "chunks of " << chunk;
  }
}

TEST(Reader, OpensNoMissingFileAndNoDirectory) {
  EXPECT_FALSE(c_xml_reader_file("/nonexistent/a.xml").is_open());
  EXPECT_FALSE(c_xml_reader_file(".").is_open());
  EXPECT_FALSE(c_xml_reader_file(nullptr).is_open());
}

TEST(Reader, ReadsAFile) {
  const ScratchFolder folder;
  const auto path = folder / "a.xml";
  std::ofstream(path) << "<a><b>7</b></a>";
  c_xml_reader_file reader(path.c_str());
  ASSERT_TRUE(reader.is_open());
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  EXPECT_EQ(reader.current_name, "a");
}

TEST(Tokenise, SetsTheClosingEventForAnUnknownNameAndChangesNothingElse) {
  const s_event_map map[] = {{1, "b", 1, 20}, {1, "cc", 2, 21}, {0, nullptr, 0, 1}};
  const std::string document = "<a><cc/><bb/></a>";
  c_xml_reader_memory reader(document.data(), document.size());
  elmx_error error{};
  reader.get_element_event(map, &error, &reader.current_name);
  EXPECT_EQ(reader.current_event, event_unknown);
  EXPECT_EQ(reader.current_name, "a");
  reader.tokenise(map, current_element);
  EXPECT_EQ(reader.current_event, event_unknown);
  EXPECT_EQ(reader.current_name, "a");
  reader.get_element_event(map, &error, &reader.current_name);
  EXPECT_EQ(reader.current_event, 21);
  reader.get_attribute_event(nullptr, &error, &reader.attribute_name);
  reader.get_element_event(map, &error, &reader.current_name);
  EXPECT_EQ(reader.current_event, event_unknown) << "bb is not b: names compare at their length";
}

TEST(Namespaces, AnElementInANamespaceMatchesNoRow) {
  const s_event_map map[] = {{1, "a", 1, 20}, {0, nullptr, 0, 1}};
  for (const char* document : {"<a xmlns='urn:x'/>", "<p:a xmlns:p='urn:x'/>", "<p:a/>"}) {
    c_xml_reader_memory reader(document, std::strlen(document));
    elmx_error error{};
    reader.get_element_event(map, &error, &reader.current_name);
    EXPECT_EQ(reader.current_event, event_unknown) << document;
    EXPECT_EQ(reader.get_element_ns_id(), 0) << document;
    EXPECT_EQ(reader.local_name, "a") << document;
  }
}

TEST(Namespaces, InstanceAttributesAreKnownByTheirNamespace) {
  const std::string document =
      "<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance' xmlns:o='urn:x' i:nil='1' o:x='2'/>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  const c_xml_local* scope = reader.xml_local;
  EXPECT_TRUE(reader.is_xsi_attribute(scope, "xmlns"));
  EXPECT_TRUE(reader.is_xsi_attribute(scope, "xmlns:o"));
  EXPECT_TRUE(reader.is_xsi_attribute(scope, "i:nil"));
  EXPECT_FALSE(reader.is_xsi_attribute(scope, "o:x"));
  EXPECT_FALSE(reader.is_xsi_attribute(scope, "xsi:nil")) << "a prefix that nothing declares";
  EXPECT_FALSE(reader.is_xsi_attribute(scope, "nil"));
}

// The default namespace is that of elements: an attribute without a prefix is in none.
TEST(Namespaces, ADefaultNamespaceDoesNotReachAttributes) {
  const std::string document = "<a xmlns='http://www.w3.org/2001/XMLSchema-instance' nil='1'/>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  EXPECT_FALSE(reader.is_xsi_attribute(reader.xml_local, "nil"));
  EXPECT_FALSE(reader.is_xsi_attribute(nullptr, "i:nil"));
}

TEST(Namespaces, TheInnermostDeclarationCounts) {
  const std::string document =
      "<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance'><b xmlns:i='urn:x' i:nil='1'></b>"
      "<c i:nil='1'/></a>";
  c_xml_reader_memory reader(document.data(), document.size());
  elmx_error error{};
  for (int i = 0; i < 2; ++i) reader.get_element_event(nullptr, &error, &reader.current_name);
  ASSERT_EQ(reader.current_name, "b");
  EXPECT_FALSE(reader.is_xsi_attribute(reader.xml_local, "i:nil"));
  for (int i = 0; i < 2; ++i) reader.get_element_event(nullptr, &error, &reader.current_name);
  ASSERT_EQ(reader.current_name, "c");
  EXPECT_TRUE(reader.is_xsi_attribute(reader.xml_local, "i:nil")) << "still declared outside";
}

TEST(Namespaces, AGuardDropsWhatWasDeclaredUnderIt) {
  c_xml_reader_memory reader("<a/>", 4);
  reader.xml_local->declare("kept", "urn:k", 1);
  {
    const c_xml_reader_local guard(&reader);
    reader.xml_local->declare("dropped", "urn:d", 1);
    EXPECT_EQ(reader.xml_local->uri_of("dropped"), "urn:d");
  }
  EXPECT_EQ(reader.xml_local->uri_of("dropped"), "");
  EXPECT_EQ(reader.xml_local->uri_of("kept"), "urn:k");
}

TEST(Attributes, TellHowTheTagEnds) {
  for (const auto& [document, closes] : {std::pair{"<a x='1'/>", true}, {"<a x='1'></a>", false}}) {
    c_xml_reader_memory reader(document, std::strlen(document));
    enter(reader);
    elmx_error error{};
    ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
    reader.current_event = closes ? 0 : event_end;
    EXPECT_FALSE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
    EXPECT_EQ(reader.current_event == event_end, closes) << document;
  }
}

TEST(Attributes, EndWithTheirTag) {
  const std::string document = "<a x='1' y='2'><b/></a>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  elmx_error error{};
  ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  EXPECT_TRUE(reader.skip_attribute_value());
  reader.get_element_event(nullptr, &error, &reader.current_name);
  std::string value = "none";
  EXPECT_FALSE(reader.get_attribute_value(&value, whitespace_preserve)) << "of <a>";
  EXPECT_FALSE(reader.skip_attribute_value());
  EXPECT_FALSE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  EXPECT_EQ(value, "none");
}

TEST(Attributes, HaveTheirValuesCollapsedWhereAsked) {
  const std::string document = "<a x=' 1  2 '/>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  std::string value = "old";
  EXPECT_FALSE(reader.get_attribute_value(&value, whitespace_preserve)) << "none was reported yet";
  elmx_error error{};
  ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  EXPECT_TRUE(reader.get_attribute_value(&value, whitespace_preserve));
  EXPECT_EQ(value, " 1  2 ");
  EXPECT_TRUE(reader.get_attribute_value(&value, whitespace_collapse));
  EXPECT_EQ(value, "1 2");
}

TEST(Tokenise, ClassifiesAttributesWithoutAPrefixOnly) {
  const s_event_map map[] = {{1, "x", 1, 20}, {0, nullptr, 0, 1}};
  const std::string document = "<a x='1' p:x='2' xmlns:p='urn:p'/>";
  c_xml_reader_memory reader(document.data(), document.size());
  enter(reader);
  elmx_error error{};
  ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  reader.tokenise(map, current_attribute);
  EXPECT_EQ(reader.current_event, 20);
  ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  EXPECT_EQ(reader.attribute_name, "p:x");
  reader.tokenise(map, current_attribute);
  EXPECT_EQ(reader.current_event, event_unknown);
}

TEST(Namespaces, DeclarationsEndWithTheirElement) {
  const std::string document =
      "<a><b xmlns:i='http://www.w3.org/2001/XMLSchema-instance'></b><c i:x='1'/></a>";
  c_xml_reader_memory reader(document.data(), document.size());
  elmx_error error{};
  for (int i = 0; i < 4; ++i) reader.get_element_event(nullptr, &error, &reader.current_name);
  ASSERT_EQ(reader.current_name, "c");
  EXPECT_FALSE(reader.is_xsi_attribute(reader.xml_local, "i:x"));
}

TEST(Malformed, EachKindHasItsCode) {
  EXPECT_EQ(first_fault("<a><b></a>"), error_malformed);
  EXPECT_EQ(first_fault("<a>"), error_truncated);
  EXPECT_EQ(first_fault(""), error_truncated);
  EXPECT_EQ(first_fault("no xml"), error_malformed);
  EXPECT_EQ(first_fault("<a>&nope;</a>"), error_malformed);
  EXPECT_EQ(first_fault("<a>\xFF</a>"), error_malformed);
  EXPECT_EQ(first_fault("<a>text<b/></a>"), error_unexpected_text);
  EXPECT_EQ(first_fault("<a x='1' x='2'/>"), error_attribute_twice);
  EXPECT_EQ(first_fault("<?xml version='1.0' encoding='KOI-9'?><a/>"), error_encoding);
}

// What a reader tells of an element <bad> whose attribute stands twice, wherever that element is.
TEST(Malformed, ARepeatedAttributeIsToldWithItsElement) {
  const std::string bad = "<bad x='1' y='2' x='3'>text</bad>";
  for (const std::string before : {"", "<a>", "<a><b/>", "<a>\n <!-- c -->\n"}) {
    const std::string document = before + bad + (before.empty() ? "" : "</a>");
    for (std::size_t chunk = 1; chunk <= document.size(); ++chunk) {
      c_xml_reader_memory reader(document.data(), document.size(), chunk);
      elmx_error error{};
      std::string name;
      while (error == 0 && name != "bad") {
        reader.get_element_event(nullptr, &error, &name);
        if (name == "b") {
          EXPECT_FALSE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
        }
      }
      ASSERT_EQ(error, error_none) << document;
      EXPECT_EQ(reader.current_event, event_start);
      std::string value;
      ASSERT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
      EXPECT_EQ(error, error_attribute_twice);
      EXPECT_EQ(reader.attribute_name, "x");
      EXPECT_FALSE(reader.get_attribute_value(&value, whitespace_preserve)) << "none is told";
      reader.handle_error(error, name, "tag", 0);
      EXPECT_EQ(reader.diagnostic()->found, "attribute x");
      EXPECT_EQ(reader.diagnostic()->offset, document.find("x='3'"));
      // Told once; the document goes no further.
      EXPECT_FALSE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
      EXPECT_EQ(error, error_none);
      reader.get_element_event(nullptr, &error, &name);
      EXPECT_EQ(error, error_attribute_twice);
    }
  }
}

TEST(Malformed, ARepeatedAttributeIsToldOfSimpleElements) {
  const std::string document = "<p:a x='1' x='2'>text</p:a>";
  for (const bool raw : {false, true}) {
    c_xml_reader_memory reader(document.data(), document.size());
    elmx_error error{};
    bool no_value = false;
    std::string name;
    std::string value;
    reader.get_element_event(nullptr, &error, &name);
    EXPECT_EQ(name, "p:a");
    EXPECT_EQ(reader.local_name, "a");
    EXPECT_FALSE(
        raw ? reader.get_element_ur_value(name, &value, &error, &no_value)
            : reader.get_simple_type_value(name, whitespace_preserve, &value, &error, &no_value));
    EXPECT_EQ(error, error_attribute_twice);
  }
}

TEST(Malformed, ARepeatedAttributeIsToldInUtf16) {
  const std::string text = "<a><b x='1' x='2'/></a>";
  std::string document = "\xFE\xFF";
  for (const char c : text) document += std::string(1, '\0') + c;
  c_xml_reader_memory reader(document.data(), document.size());
  elmx_error error{};
  std::string name;
  reader.get_element_event(nullptr, &error, &name);
  reader.get_element_event(nullptr, &error, &name);
  EXPECT_EQ(name, "b");
  EXPECT_TRUE(reader.get_attribute_event(nullptr, &error, &reader.attribute_name));
  EXPECT_EQ(error, error_attribute_twice);
  EXPECT_EQ(reader.attribute_name, "x");
}

TEST(Malformed, DocumentTypesAreRefusedBeforeAnyEntity) {
  EXPECT_EQ(first_fault("<!DOCTYPE a><a/>"), error_doctype);
  EXPECT_EQ(first_fault("<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"), error_doctype);
}

TEST(Malformed, NestingHasALimit) {
  std::string deep;
  for (std::size_t i = 0; i <= ExpatParser::deepest; ++i) deep += "<a>";
  EXPECT_EQ(first_fault(deep), error_too_deep);
  std::string fits;
  for (std::size_t i = 0; i < ExpatParser::deepest; ++i) fits += "<a>";
  for (std::size_t i = 0; i < ExpatParser::deepest; ++i) fits += "</a>";
  EXPECT_EQ(first_fault(fits), error_none);
}

// Reads until the fault and reports it under the name "a".
lmx::Diagnostic diagnose(const std::string& document, std::size_t chunk) {
  c_xml_reader_memory reader(document.data(), document.size(), chunk);
  elmx_error error{};
  while (error == 0) {
    reader.get_element_event(nullptr, &error, &reader.current_name);
    if (error == 0 && reader.current_event == event_start) {
      elmx_error ignored{};
      while (reader.get_attribute_event(nullptr, &ignored, &reader.attribute_name)) {
      }
    }
  }
  EXPECT_EQ(reader.handle_error(error, "a", "tag", 0, "nothing"), error);
  EXPECT_NE(reader.diagnostic(), nullptr);
  return *reader.diagnostic();
}

TEST(Diagnostic, NamesThePlaceWhereverChunksEnd) {
  const std::string document = "<a>\n <b/>\n \xC3\xA4oops\n</a>";
  for (std::size_t chunk = 1; chunk <= document.size(); ++chunk) {
    const lmx::Diagnostic fault = diagnose(document, chunk);
    EXPECT_EQ(fault.code, error_unexpected_text);
    EXPECT_EQ(fault.name, "a");
    EXPECT_EQ(fault.expected, "nothing");
    EXPECT_EQ(fault.line, 3U) << "chunks of " << chunk;
    EXPECT_EQ(fault.column, 2U);
  }
}

// The blanks before a stray text are quoted with it, whatever tag they follow.
TEST(Diagnostic, QuotesStrayTextWithItsBlanks) {
  for (const std::string tag : {"<b/>", "<b></b>", "<b>"}) {
    const lmx::Diagnostic fault = diagnose("<a>" + tag + "\n \t oops<c/>", 4096);
    EXPECT_EQ(fault.code, error_unexpected_text);
    EXPECT_EQ(fault.found, "the text \"\n \t oops\"");
    EXPECT_EQ(fault.offset, 3 + tag.size() + 4) << "the text itself, after \"\\n \\t \"";
    EXPECT_EQ(fault.line, 2U);
    EXPECT_EQ(fault.column, 4U);
  }
}

TEST(Diagnostic, KeepsTheFirstFaultAndLeavesTheCodeAlone) {
  c_xml_reader_memory reader("<a/>", 4);
  EXPECT_EQ(reader.diagnostic(), nullptr);
  EXPECT_EQ(reader.handle_error(error_too_long, "first", "tag", 0), error_too_long);
  EXPECT_EQ(reader.handle_error(error_invalid_value, "second", "tag", 0), error_invalid_value);
  EXPECT_EQ(reader.diagnostic()->name, "first");
}

// A file that opens but cannot be read: the process's own memory at address 0.
TEST(Malformed, AReadErrorIsNoEndOfTheDocument) {
  c_xml_reader_file reader("/proc/self/mem");
  ASSERT_TRUE(reader.is_open());
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  EXPECT_EQ(error, error_reading);
}

// A value is quoted whole up to 60 bytes.
TEST(Diagnostic, QuotesLongValuesShortened) {
  for (const std::size_t size : {60U, 61U}) {
    c_xml_reader_memory reader("<a/>", 4);
    reader.value_text = std::string(size, 'x');
    reader.handle_error(error_too_long, "a", "tag", 0);
    EXPECT_EQ(reader.diagnostic()->found,
              '"' + std::string(60, 'x') + (size > 60 ? "...\"" : "\""));
  }
}

TEST(Policy, SeesEachFaultAndDecides) {
  c_xml_reader_memory reader("<a/>", 4);
  int seen = 0;
  reader.set_policy([&](const lmx::Diagnostic& fault) {
    ++seen;
    return fault.code == error_too_long ? error_none : fault.code;
  });
  EXPECT_EQ(reader.handle_error(error_too_long, "x", "tag", 0), error_none);
  EXPECT_EQ(reader.handle_error(error_invalid_value, "x", "tag", 0), error_invalid_value);
  EXPECT_EQ(seen, 2);
  EXPECT_EQ(reader.diagnostic()->code, error_too_long) << "the first stays, tolerated or not";
}

TEST(StringStack, KeepsANameWhereItIs) {
  c_string_stack stack;
  const c_string_stack_node outer(stack, "outer");
  const char* text = outer.get_str();
  {
    const c_string_stack_node inner(stack, "inner");
    EXPECT_EQ(stack.path(), "/outer/inner");
    EXPECT_TRUE(inner != "outer");
  }
  EXPECT_EQ(outer.get_str(), text);
  EXPECT_EQ(stack.path(), "/outer");
}

TEST(Meaning, EveryCodeOfTheTableHasWords) {
  for (const int code : {0,  1,  3,  7,  10, 16, 19, 21,  25,  26,  28,  29,  31,  32,
                         35, 36, 37, 38, 39, 42, 45, 100, 101, 102, 103, 104, 105, 106}) {
    EXPECT_STRNE(meaning(elmx_error(code)), "unknown fault") << code;
  }
  EXPECT_STREQ(meaning(elmx_error(999)), "unknown fault");
}

TEST(Reader, OpensNothingButRegularFiles) {
  const ScratchFolder scratch;
  ASSERT_EQ(::mkfifo((scratch / "pipe").c_str(), 0666), 0);
  std::filesystem::create_symlink("loop", scratch / "loop");
  std::ofstream(scratch / "file") << "<a/>";
  std::filesystem::create_symlink("file", scratch / "link");
  for (const char* name : {"pipe", "loop", "nothing", "."}) {
    EXPECT_FALSE(c_xml_reader_file((scratch / name).c_str()).is_open()) << name;
  }
  EXPECT_FALSE(c_xml_reader_file("/dev/zero").is_open());
  EXPECT_TRUE(c_xml_reader_file((scratch / "link").c_str()).is_open());
}

}  // namespace

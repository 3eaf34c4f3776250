// Pieces of a document that are longer than any chunk: how long they may be, and what they cost.
// None of it may hang on what the installed parser does by itself.

#include <gtest/gtest.h>

#include <expat.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include "lmx/byte_sources.h"
#include "lmx/reader.h"
#include "lmx/token_stream.h"

namespace {

int waiting_turned_off = 0;

}  // namespace

// Stands before the parser's own, where that has one: newer parsers wait by themselves until an
// unfinished piece has doubled.
extern "C" __attribute__((visibility("default"))) XML_Bool XMLCALL
XML_SetReparseDeferralEnabled(XML_Parser parser, XML_Bool enabled) {
  waiting_turned_off += enabled == XML_FALSE ? 1 : 0;
  using Setter = XML_Bool(XMLCALL*)(XML_Parser, XML_Bool);
  const auto own = reinterpret_cast<Setter>(::dlsym(RTLD_NEXT, __func__));
  return own != nullptr ? own(parser, enabled) : XML_FALSE;
}

namespace {

using namespace lmx;

constexpr std::size_t mebibyte = std::size_t{1} << 20;
constexpr std::size_t most = TokenStream::longest;

// A document with a run of x in its middle, which is never held as a whole.
struct Document {
  std::string before;
  std::size_t run;
  std::string after;

  std::uint64_t size() const { return before.size() + run + after.size(); }
};

// What the reader asked for: the sizes of the portions it got.
using Portions = std::vector<std::size_t>;

class MeteredSource : public ByteSource {
 public:
  MeteredSource(Document document, Portions& portions)
      : document_(std::move(document)), portions_(portions) {}

  std::ptrdiff_t read(std::uint64_t offset, std::span<char> buffer) override {
    std::size_t filled = 0;
    while (filled < buffer.size() && offset + filled < document_.size()) {
      filled += copy_part(offset + filled, buffer.subspan(filled));
    }
    if (filled > 0) portions_.push_back(filled);
    return static_cast<std::ptrdiff_t>(filled);
  }

 private:
  // As many bytes as stand together from a place on.
  std::size_t copy_part(std::uint64_t place, std::span<char> buffer) const {
    const std::uint64_t run_begin = document_.before.size();
    const std::uint64_t run_end = run_begin + document_.run;
    if (place < run_begin) return document_.before.copy(buffer.data(), buffer.size(), place);
    if (place >= run_end) {
      return document_.after.copy(buffer.data(), buffer.size(), place - run_end);
    }
    const std::size_t count = std::min<std::uint64_t>(buffer.size(), run_end - place);
    std::fill_n(buffer.begin(), count, 'x');
    return count;
  }

  Document document_;
  Portions& portions_;
};

class MeteredReader : public c_xml_reader {
 public:
  explicit MeteredReader(const Document& document, std::size_t chunk = c_xml::default_chunk)
      : MeteredReader(document, chunk, std::make_unique<Portions>()) {}

  const Portions& portions() const { return *portions_; }

 private:
  MeteredReader(const Document& document, std::size_t chunk, std::unique_ptr<Portions> portions)
      : c_xml_reader(std::make_unique<MeteredSource>(document, *portions), chunk),
        portions_(std::move(portions)) {}

  std::unique_ptr<Portions> portions_;
};

// The fault that ends the reading of a whole document, or error_truncated after its last tag.
elmx_error last_fault(c_xml_reader& reader) {
  std::string name;
  elmx_error error{};
  while (error == error_none) reader.get_element_event(nullptr, &error, &name);
  return error;
}

elmx_error last_fault(const Document& document) {
  MeteredReader reader(document);
  return last_fault(reader);
}

// Bytes that the parser goes through when each portion makes it begin anew at the run's start.
std::uint64_t bytes_gone_through(const Portions& portions) {
  std::uint64_t handed = 0;
  std::uint64_t sum = 0;
  for (const std::size_t portion : portions) {
    handed += portion;
    sum += handed;
  }
  return sum;
}

TEST(LongPieces, AreReadUpTo64MiBAndNoFurther) {
  // What is counted begins after the tag or text before, and ends with the next tag.
  for (const auto& [before, after] : {std::pair("<!--", "--><a/>"), std::pair("<?x ", "?><a/>"),
                                      std::pair("<a b='", "'/>"), std::pair("<", "/>")}) {
    const std::string text_before = before;
    const std::size_t run = most - text_before.size() - std::string(after).size();
    EXPECT_EQ(last_fault({before, run, after}), error_truncated) << before;
    EXPECT_EQ(last_fault({before, run + 1, after}), error_too_long) << before;
  }
  // Wherever it stands in its portion: after a tag that takes some of the first.
  const std::size_t run = most - 7;
  EXPECT_EQ(last_fault({"<r><!--", run, "--></r>"}), error_too_long);
  EXPECT_EQ(last_fault({"<r><!--", run - 4, "--></r>"}), error_truncated);
  EXPECT_EQ(last_fault({"<r><!--", run - 3, "--></r>"}), error_too_long);
}

TEST(LongPieces, AreRefusedWhereTheDocumentEndsInThem) {
  EXPECT_EQ(last_fault({"<!--", most, ""}), error_too_long);
  EXPECT_EQ(last_fault({"<!--", most / 2, ""}), error_truncated);
  EXPECT_EQ(last_fault({"<r></", most, ""}), error_too_long);
}

TEST(LongPieces, EndAnElementsTextBeyond64MiB) {
  for (const std::size_t beyond : {0, 1}) {
    MeteredReader reader({"<a>", most + beyond, "</a>"});
    std::string name;
    std::string value;
    elmx_error error{};
    bool no_value = false;
    reader.get_element_event(nullptr, &error, &name);
    EXPECT_EQ(reader.get_simple_type_value(name, whitespace_preserve, &value, &error, &no_value),
              beyond == 0);
    EXPECT_EQ(error, beyond == 0 ? error_none : error_too_long);
    if (beyond == 0) {
      EXPECT_EQ(value.size(), most);
    }
  }
}

TEST(LongPieces, EndInnerMarkupBeyond64MiB) {
  for (const std::size_t beyond : {0, 1}) {
    MeteredReader reader({"<a><b>", most - 7 + beyond, "</b></a>"});
    std::string name;
    std::string value;
    elmx_error error{};
    bool no_value = false;
    reader.get_element_event(nullptr, &error, &name);
    EXPECT_EQ(reader.get_element_ur_value(name, &value, &error, &no_value), beyond == 0);
    EXPECT_EQ(error, beyond == 0 ? error_none : error_too_long);
    EXPECT_EQ(value.size(), beyond == 0 ? most : 0);
  }
}

// A parser that begins anew with each portion goes through n bytes in portions of c about n^2 / 2c
// bytes: 64 MiB in chunks of 32 KiB a thousand times. Portions that double make it c + 2c + 4c and
// so on up to n, of which the last ends at 2n at most: below 4n.
TEST(LongPieces, AreGoneThroughABoundedNumberOfTimes) {
  for (const std::size_t size : {mebibyte, 4 * mebibyte, 16 * mebibyte}) {
    for (const std::size_t chunk : {std::size_t{1}, std::size_t{1000}, c_xml::default_chunk}) {
      for (const char* before : {"<!--", "<?x ", "<a b='", "<"}) {
        const bool is_tag = before[1] != '!' && before[1] != '?';
        MeteredReader reader({before, size, is_tag ? (before[1] == 'a' ? "'/>" : "/>") : ""},
                             chunk);
        EXPECT_EQ(last_fault(reader), error_truncated);
        EXPECT_LT(bytes_gone_through(reader.portions()), 4 * size + 4 * chunk) << before << chunk;
      }
    }
  }
}

TEST(LongPieces, TakeNoLargerPortionsOfOrdinaryDocuments) {
  std::string many = "<r>";
  while (many.size() < mebibyte) many += "<!-- a comment --><a b=\"c\"/>\n";
  MeteredReader reader({many + "</r>", 0, ""});
  EXPECT_EQ(last_fault(reader), error_truncated);
  const auto largest = std::max_element(reader.portions().begin(), reader.portions().end());
  EXPECT_EQ(*largest, c_xml::default_chunk);
}

// After a long comment comes a long portion; its steps are held a few at a time.
TEST(LongPieces, AreFollowedByEveryStep) {
  std::string many;
  for (int i = 0; i < 200000; ++i) many += "<a b='1'>t</a><c/>";
  const Document document{"<r><!--", 8 * mebibyte, "-->" + many + "</r>"};
  MeteredReader reader(document);
  std::string name;
  std::string value;
  elmx_error error{};
  int starts = 0;
  int ends = 0;
  int attributes = 0;
  for (;;) {
    reader.get_element_event(nullptr, &error, &name);
    if (error != error_none) break;
    ++(reader.current_event == event_end ? ends : starts);
    if (name != "a" || reader.current_event == event_end) continue;
    while (reader.get_attribute_event(nullptr, &error, &name)) {
      ASSERT_TRUE(reader.get_attribute_value(&value, whitespace_preserve));
      ASSERT_EQ(name + value, "b1");
      ++attributes;
    }
    ASSERT_TRUE(reader.get_element_value(&value, whitespace_preserve, true));
    ASSERT_EQ(value, "t");
  }
  EXPECT_EQ(error, error_truncated);
  EXPECT_EQ(std::pair(starts, ends), std::pair(400001, 400001));
  EXPECT_EQ(attributes, 200000);
}

TEST(LongPieces, HaveAParserThatDoesNotWaitByItself) {
  waiting_turned_off = 0;
  EXPECT_EQ(last_fault({"<a/>", 0, ""}), error_truncated);
  EXPECT_EQ(waiting_turned_off, 1);
}

}  // namespace

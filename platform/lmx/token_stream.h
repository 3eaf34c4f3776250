#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lmx/error.h"

struct XML_ParserStruct;

namespace lmx {

// Where a document's bytes come from.
class byte_source {
 public:
  virtual ~byte_source() = default;
  // Up to `size` bytes into `buffer`; 0 at the end, -1 when reading failed.
  virtual std::ptrdiff_t read(char* buffer, std::size_t size) = 0;
  virtual bool is_open() const { return true; }
};

enum class token_kind { start, end, text, fault };

// One step of the document, in document order. The view lives until a chunk is parsed: at the
// soonest in the next call of peek() behind take(). Blanks beside a tag are no step, unless they
// are an element's whole content.
struct token {
  token_kind kind;
  bool self_closed;          // of a start that closes itself, and of its end
  bool prefixed;             // of a start whose name has a prefix
  bool declares;             // of a start with an attribute whose name begins with "xmlns"
  elmx_error error;          // of a fault
  std::string_view text;     // name of a start or end, characters of a text, words of a fault; of
                             // an attribute that stands twice the element's name
  std::uint64_t offset;      // byte at which the token starts
  std::uint64_t end_offset;  // byte behind it
  std::uint32_t first_attribute;
  std::uint32_t attribute_count;
};

struct attribute_token {
  std::string_view name;
  std::string_view value;  // entities resolved, normalised as XML asks
};

struct text_position {
  std::uint64_t offset;  // bytes before it
  std::uint64_t line;    // from 1
  std::uint64_t column;  // from 1, in characters of a UTF-8 document
};

// Tokens of a document, pulled one by one. The document is parsed in chunks; only the tokens of the
// chunk parsed last, and that chunk's bytes, are held.
class token_stream {
 public:
  static constexpr std::size_t default_chunk = 32768;
  static constexpr std::size_t deepest = 256;  // open elements; one more is a fault
  // Bytes of an element's text, and of a stretch of the document without tag or text: a tag, or
  // comments and processing instructions in a row. More is a fault, so memory stays bounded.
  static constexpr std::size_t longest = std::size_t{64} * 1024 * 1024;
  static constexpr const char* too_long_words = "more than 64 MiB in one piece";

  token_stream(std::unique_ptr<byte_source> source, std::size_t chunk_size);
  token_stream(const token_stream&) = delete;
  token_stream& operator=(const token_stream&) = delete;

  // The next token without taking it. A fault stays; behind the root's end tag stands a fault of
  // code error_truncated.
  token peek() {
    if (next_ >= records_.size()) parse_until_token();
    const record& r = records_[next_];
    return {r.kind,       r.self_closed, r.prefixed,   r.declares,        r.error,
            view(r.text), r.offset,      r.end_offset, r.first_attribute, r.attribute_count};
  }
  void take() { ++next_; }

  // Attribute `index` of those in the chunk parsed last, as a start token tells them.
  attribute_token attribute(std::size_t index) const {
    const attribute_record& a = attributes_[index];
    return {view(a.name), view(a.value)};
  }

  // Starts keeping the document's bytes from `offset` on, which lies in the chunk parsed last.
  void keep_from(std::uint64_t offset);
  // The bytes kept up to `offset`, which are then dropped.
  std::string take_kept(std::uint64_t offset);

  bool is_open() const { return source_->is_open(); }

  // Whether the document's bytes are UTF-8, so that raw parts of it can be handed out.
  bool is_utf8() const { return is_utf8_; }

  // Line and column of a byte. Exact within the two chunks parsed last, else the start of a chunk's
  // line; in a UTF-16 document approximate.
  text_position position_of(std::uint64_t offset) const;

 private:
  static constexpr std::size_t no_record = static_cast<std::size_t>(-1);

  struct parser_end {
    void operator()(XML_ParserStruct* parser) const;
  };
  struct handlers;
  struct span {
    std::size_t begin;
    std::size_t size;
  };
  struct record {
    token_kind kind;
    span text;
    std::uint64_t offset;
    std::uint64_t end_offset;
    bool self_closed = false;
    bool prefixed = false;
    bool declares = false;
    elmx_error error = error_none;
    std::uint32_t first_attribute = 0;
    std::uint32_t attribute_count = 0;
  };
  struct blank_run {
    char blank;
    std::size_t size;
  };
  struct attribute_record {
    span name;
    span value;
  };
  // Where a chunk starts, for positions.
  struct landmark {
    std::uint64_t offset;
    std::uint64_t line;
    std::uint64_t column;
  };

  void parse_until_token();
  void parse_chunk();
  void fail(elmx_error error, std::string_view words);
  void note_parse_error();
  std::string tag_name_before(std::uint64_t offset) const;
  void advance_landmark();
  char* grow_arena(std::size_t size);
  span keep_text(std::string_view text);
  std::string_view view(span s) const { return {arena_.data() + s.begin, s.size}; }
  record& push(token_kind kind, span text, std::uint64_t offset, std::uint64_t size);
  void push_text(std::string_view piece);
  void settle_blanks(bool count);
  std::uint64_t place() const;
  std::uint64_t size_here() const;

  std::unique_ptr<byte_source> source_;
  std::unique_ptr<XML_ParserStruct, parser_end> parser_;
  std::vector<char> chunk_;           // bytes parsed last
  std::vector<char> previous_chunk_;  // those before
  std::size_t chunk_capacity_;
  landmark chunk_start_{0, 1, 1};
  landmark previous_start_{0, 1, 1};
  std::vector<record> records_;
  std::vector<attribute_record> attributes_;
  std::vector<char> arena_ = std::vector<char>(4096);  // texts of the records, up to arena_end_
  std::size_t arena_end_ = 0;
  std::size_t next_ = 0;
  bool follows_start_ = false;            // the last tag was a start
  std::size_t start_record_ = no_record;  // its record, where that is in the chunk parsed last
  // Blanks behind a tag, of which it is open whether they count.
  std::array<blank_run, 4> blanks_{};
  std::size_t blank_runs_ = 0;
  std::uint64_t blanks_offset_ = 0;
  std::size_t depth_ = 0;
  bool ended_ = false;
  bool faulted_ = false;
  bool is_utf8_ = true;
  std::size_t silent_ = 0;  // bytes since the last tag or text, in whole chunks
  bool keeping_ = false;
  std::uint64_t kept_from_ = 0;
  std::string kept_;
  std::exception_ptr thrown_;  // out of a handler, to be thrown on behind the parser
};

}  // namespace lmx

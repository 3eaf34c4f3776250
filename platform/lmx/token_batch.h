#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lmx/error.h"

namespace lmx {

enum class TokenKind { start, end, text, fault };

// One step of the document. Blanks beside a tag are no step, unless they are an element's whole
// content.
struct Token {
  TokenKind kind;
  bool self_closed;       // of a start that closes itself, and of its end
  bool prefixed;          // of a start whose name has a prefix
  bool declares;          // of a start with an attribute whose name begins with "xmlns"
  elmx_error error;       // of a fault; of a start whose attributes cannot be told because of the
                          // fault that comes next
  std::string_view text;  // name of a start or end, characters of a text, words of a fault; of
                          // an attribute that stands twice its name
  std::uint64_t offset;   // byte at which the token starts
  std::uint64_t end_offset;  // byte after it
  std::uint32_t first_attribute;
  std::uint32_t attribute_count;
};

struct AttributeToken {
  std::string_view name;
  std::string_view value;  // entities resolved, normalised as XML asks
};

// A stretch of the document, in bytes.
struct Extent {
  std::uint64_t offset;
  std::uint64_t size;
};

// The tokens of the bytes that were parsed last, in document order. What it hands out lives until
// the next clear() or add.
class TokenBatch {
 public:
  std::size_t size() const { return records_.size(); }
  Token operator[](std::size_t index) const {
    const Record& r = records_[index];
    return {r.kind,       r.self_closed, r.prefixed,   r.declares,        r.error,
            view(r.text), r.offset,      r.end_offset, r.first_attribute, r.attribute_count};
  }

  // An attribute by its number in the batch, as a start token tells it.
  AttributeToken attribute(std::size_t index) const {
    const AttributeRecord& a = attributes_[index];
    return {view(a.name), view(a.value)};
  }

  // Tokens and attributes held.
  std::size_t held() const { return records_.size() + attributes_.size(); }

  // Drops the tokens. Blanks after the last tag are remembered no more: see settle().
  void clear();

  // `attributes`: names and values in turns, then null.
  void add_start(std::string_view name, const char* const* attributes, Extent extent);
  // A start tag of which only the name is known.
  void add_unreadable_start(std::string_view name, elmx_error error, Extent extent);
  void add_end(std::string_view name, Extent extent);
  // A piece of text; pieces that follow each other make one token.
  void add_text(std::string_view piece, std::uint64_t offset);
  void add_fault(elmx_error error, std::string_view words, std::uint64_t offset);

  // To be called when the bytes end: blanks after a start may be an element's whole content, so
  // they become a token.
  void settle() { settle_blanks(follows_start_); }

 private:
  static constexpr std::size_t no_record = static_cast<std::size_t>(-1);

  // A text in the arena.
  struct Span {
    std::size_t begin;
    std::size_t size;
  };
  struct Record {
    TokenKind kind;
    Span text;
    std::uint64_t offset;
    std::uint64_t end_offset;
    bool self_closed = false;
    bool prefixed = false;
    bool declares = false;
    elmx_error error = error_none;
    std::uint32_t first_attribute = 0;
    std::uint32_t attribute_count = 0;
  };
  struct BlankRun {
    char blank;
    std::size_t size;
  };
  struct AttributeRecord {
    Span name;
    Span value;
  };

  std::string_view view(Span s) const { return {arena_.data() + s.begin, s.size}; }
  char* grow_arena(std::size_t size);
  Span keep_text(std::string_view text);
  Record& push(TokenKind kind, Span text, Extent extent);
  void settle_blanks(bool count);

  std::vector<Record> records_;
  std::vector<AttributeRecord> attributes_;
  std::vector<char> arena_ = std::vector<char>(4096);  // texts of the records, up to arena_end_
  std::size_t arena_end_ = 0;
  bool follows_start_ = false;            // the last tag was a start
  std::size_t start_record_ = no_record;  // its record, where that is in this batch
  // Blanks after a tag, of which it is open whether they count.
  std::array<BlankRun, 4> blanks_{};
  std::size_t blank_runs_ = 0;
  std::uint64_t blanks_offset_ = 0;
};

}  // namespace lmx

#include "lmx/token_stream.h"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <span>
#include <utility>

namespace lmx {

namespace {

// Counted in bytes, of which vectors hold many, and summed before they overflow.
std::uint64_t line_breaks_in(std::string_view bytes) {
  std::uint64_t count = 0;
  while (!bytes.empty()) {
    std::uint8_t block_count = 0;
    for (const char c : bytes.substr(0, 255)) {
      block_count = static_cast<std::uint8_t>(block_count + (c == '\n' ? 1 : 0));
    }
    count += block_count;
    bytes.remove_prefix(std::min<std::size_t>(bytes.size(), 255));
  }
  return count;
}

// Whether a piece of text is one blank, once or repeated: a line break, or an indentation.
bool is_one_blank(std::string_view piece) {
  const char first = piece[0];
  if (first != ' ' && first != '\n' && first != '\t') return false;
  return piece.size() == 1 || std::memcmp(piece.data(), piece.data() + 1, piece.size() - 1) == 0;
}

// Characters of UTF-8 text: continuation bytes do not count.
std::uint64_t characters_in(std::string_view bytes) {
  return static_cast<std::uint64_t>(std::count_if(bytes.begin(), bytes.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

bool starts_as_utf16(std::string_view bytes) {
  return bytes.size() >= 2 &&
         (bytes.substr(0, 2) == "\xFE\xFF" || bytes.substr(0, 2) == "\xFF\xFE" ||
          bytes[0] == '\0' || bytes[1] == '\0');
}

bool names_utf8(std::string_view encoding) {
  const auto same = [&](std::string_view name) {
    return encoding.size() == name.size() &&
           std::equal(encoding.begin(), encoding.end(), name.begin(), [](char a, char b) {
             return (a >= 'a' && a <= 'z' ? static_cast<char>(a - 'a' + 'A') : a) == b;
           });
  };
  return same("UTF-8") || same("US-ASCII");
}

}  // namespace

// --- Steps, as the callbacks find them ----------------------------------------------------------

// Room for so many bytes more.
inline char* token_stream::grow_arena(std::size_t size) {
  if (arena_.size() - arena_end_ < size) [[unlikely]] {
    arena_.resize(2 * arena_.size() + size);
  }
  char* const room = arena_.data() + arena_end_;
  arena_end_ += size;
  return room;
}

inline token_stream::span token_stream::keep_text(std::string_view text) {
  std::memcpy(grow_arena(text.size()), text.data(), text.size());
  return {arena_end_ - text.size(), text.size()};
}

inline std::uint64_t token_stream::place() const {
  return static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_.get()));
}

inline std::uint64_t token_stream::size_here() const {
  return static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser_.get()));
}

inline token_stream::record& token_stream::push(token_kind kind, span text, std::uint64_t offset,
                                                std::uint64_t size) {
  return records_.emplace_back(
      record{.kind = kind, .text = text, .offset = offset, .end_offset = offset + size});
}

// Makes the blanks read since the last tag a step of their own, or forgets them.
inline void token_stream::settle_blanks(bool count) {
  const std::size_t runs = std::exchange(blank_runs_, 0);
  if (!count || runs == 0) return;
  const std::size_t begin = arena_end_;
  for (const blank_run& run : std::span(blanks_).first(runs)) {
    std::memset(grow_arena(run.size), run.blank, run.size);
  }
  push(token_kind::text, {begin, arena_end_ - begin}, blanks_offset_, 0);
}

// expat hands out text in pieces; neighbours in the arena grow together.
inline void token_stream::push_text(std::string_view piece) {
  const bool is_new = records_.empty() || records_.back().kind != token_kind::text;
  if (is_new && blank_runs_ < blanks_.size() && is_one_blank(piece)) {
    if (blank_runs_ == 0) blanks_offset_ = place();
    blanks_[blank_runs_++] = {piece[0], piece.size()};
    return;
  }
  settle_blanks(true);
  if (records_.empty() || records_.back().kind != token_kind::text) {
    push(token_kind::text, {arena_end_, 0}, place(), 0);
  }
  keep_text(piece);
  records_.back().text.size += piece.size();
}

// expat's callbacks. An exception must not cross the parser: it is kept, the parser is stopped, and
// parse_chunk() throws it on.
struct token_stream::handlers {
  template <class Action>
  static void guard(void* user, Action action) {
    auto& stream = *static_cast<token_stream*>(user);
    if (stream.faulted_ || stream.thrown_) return;
    try {
      action(stream);
    } catch (...) {
      stream.thrown_ = std::current_exception();
      XML_StopParser(stream.parser_.get(), XML_FALSE);
    }
  }

  static void XMLCALL start(void* user, const XML_Char* name, const XML_Char** attributes) {
    guard(user, [&](token_stream& stream) {
      if (++stream.depth_ > deepest) {
        stream.fail(error_too_deep, "elements nested deeper than 256");
        return;
      }
      stream.settle_blanks(false);
      const auto first = static_cast<std::uint32_t>(stream.attributes_.size());
      bool declares = false;
      for (; *attributes != nullptr; attributes += 2) {
        const std::string_view attribute = attributes[0];
        declares = declares || attribute.starts_with("xmlns");
        stream.attributes_.push_back(
            {stream.keep_text(attribute), stream.keep_text(attributes[1])});
      }
      const std::string_view whole = name;
      stream.follows_start_ = true;
      stream.start_record_ = stream.records_.size();
      record& made = stream.push(token_kind::start, stream.keep_text(whole), stream.place(),
                                 stream.size_here());
      made.prefixed = whole.find(':') != std::string_view::npos;
      made.declares = declares;
      made.first_attribute = first;
      made.attribute_count = static_cast<std::uint32_t>(stream.attributes_.size()) - first;
    });
  }

  static void XMLCALL end(void* user, const XML_Char* name) {
    guard(user, [&](token_stream& stream) {
      stream.settle_blanks(stream.follows_start_);
      // Right behind its start the name stands in the arena already.
      const bool is_kept = stream.follows_start_ && stream.start_record_ != no_record;
      const span text =
          is_kept ? stream.records_[stream.start_record_].text : stream.keep_text(name);
      stream.follows_start_ = false;
      // The end of a tag that closes itself has no bytes of its own.
      const std::uint64_t size = stream.size_here();
      stream.push(token_kind::end, text, stream.place(), size);
      if (size == 0) {
        stream.records_.back().self_closed = true;
        stream.records_[stream.records_.size() - 2].self_closed = true;
      }
      if (--stream.depth_ == 0) stream.ended_ = true;
    });
  }

  static void XMLCALL text(void* user, const XML_Char* characters, int length) {
    guard(user, [&](token_stream& stream) {
      if (length > 0) stream.push_text({characters, static_cast<std::size_t>(length)});
    });
  }

  static void XMLCALL doctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    guard(user, [&](token_stream& stream) {
      stream.fail(error_doctype, "a document type declaration, which is refused");
    });
  }

  static void XMLCALL declaration(void* user, const XML_Char*, const XML_Char* encoding, int) {
    guard(user, [&](token_stream& stream) {
      if (encoding != nullptr && !names_utf8(encoding)) stream.is_utf8_ = false;
    });
  }
};

token_stream::token_stream(std::unique_ptr<byte_source> source, std::size_t chunk_size)
    : source_(std::move(source)),
      parser_(XML_ParserCreate(nullptr)),
      chunk_capacity_(std::max<std::size_t>(chunk_size, 1)) {
  if (parser_ == nullptr) throw std::bad_alloc();
  XML_SetUserData(parser_.get(), this);
  XML_SetElementHandler(parser_.get(), &handlers::start, &handlers::end);
  XML_SetCharacterDataHandler(parser_.get(), &handlers::text);
  XML_SetStartDoctypeDeclHandler(parser_.get(), &handlers::doctype);
  XML_SetXmlDeclHandler(parser_.get(), &handlers::declaration);
}

void token_stream::parser_end::operator()(XML_ParserStruct* parser) const {
  XML_ParserFree(parser);
}

void token_stream::fail(elmx_error error, std::string_view words) {
  if (faulted_) return;
  faulted_ = true;
  settle_blanks(follows_start_);
  const auto index = XML_GetCurrentByteIndex(parser_.get());
  const auto offset = index < 0 ? chunk_start_.offset : static_cast<std::uint64_t>(index);
  push(token_kind::fault, keep_text(words), offset, 0).error = error;
  XML_StopParser(parser_.get(), XML_FALSE);
}

// Name of the start tag that holds a byte of the chunk parsed last; empty when the tag began before
// the two chunks at hand.
std::string token_stream::tag_name_before(std::uint64_t offset) const {
  std::string bytes(previous_chunk_.begin(), previous_chunk_.end());
  bytes.append(chunk_.begin(), chunk_.end());
  const std::uint64_t first = chunk_start_.offset - previous_chunk_.size();
  const auto open = bytes.rfind('<', static_cast<std::size_t>(offset - first));
  if (open == std::string::npos) return {};
  return bytes.substr(open + 1, bytes.find_first_of(" \t\r\n/>", open) - open - 1);
}

void token_stream::note_parse_error() {
  const XML_Error code = XML_GetErrorCode(parser_.get());
  if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
  if (code == XML_ERROR_DUPLICATE_ATTRIBUTE) {
    const auto place = static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_.get()));
    fail(error_attribute_twice, tag_name_before(place));
    return;
  }
  elmx_error error = error_malformed;
  if (code == XML_ERROR_NO_ELEMENTS || code == XML_ERROR_UNCLOSED_TOKEN) error = error_truncated;
  if (code == XML_ERROR_UNKNOWN_ENCODING || code == XML_ERROR_INCORRECT_ENCODING) {
    error = error_encoding;
  }
  fail(error, XML_ErrorString(code));
}

// Moves the landmark to the end of the chunk parsed last.
void token_stream::advance_landmark() {
  previous_start_ = chunk_start_;
  const std::string_view bytes(chunk_.data(), chunk_.size());
  chunk_start_.offset += bytes.size();
  const std::uint64_t breaks = line_breaks_in(bytes);
  chunk_start_.line += breaks;
  if (breaks == 0) {
    chunk_start_.column += characters_in(bytes);
  } else {
    chunk_start_.column = 1 + characters_in(bytes.substr(bytes.rfind('\n') + 1));
  }
}

void token_stream::parse_chunk() {
  records_.clear();
  attributes_.clear();
  arena_end_ = 0;
  next_ = 0;
  start_record_ = no_record;
  advance_landmark();
  previous_chunk_.swap(chunk_);
  chunk_.resize(chunk_capacity_);
  const std::ptrdiff_t got = source_->read(chunk_.data(), chunk_.size());
  if (got < 0) {
    chunk_.clear();
    fail(error_reading, "a read error");
    return;
  }
  chunk_.resize(static_cast<std::size_t>(got));
  if (chunk_start_.offset == 0 && starts_as_utf16({chunk_.data(), chunk_.size()})) is_utf8_ = false;
  if (keeping_) kept_.append(chunk_.data(), chunk_.size());
  const XML_Status status =
      XML_Parse(parser_.get(), chunk_.data(), static_cast<int>(chunk_.size()), got == 0);
  if (thrown_) std::rethrow_exception(thrown_);
  if (status == XML_STATUS_ERROR && !faulted_) note_parse_error();
  if (got == 0 && !faulted_) fail(error_truncated, "the end of the document");
  silent_ = records_.empty() && blank_runs_ == 0 ? silent_ + chunk_.size() : 0;
  if (std::max(silent_, kept_.size()) > longest) fail(error_too_long, too_long_words);
  settle_blanks(follows_start_);
}

void token_stream::parse_until_token() {
  while (next_ >= records_.size()) {
    if (ended_ && !faulted_) fail(error_truncated, "the end of the document");
    if (faulted_ && !records_.empty() && records_.back().kind == token_kind::fault) {
      next_ = records_.size() - 1;
      break;
    }
    parse_chunk();
  }
}

void token_stream::keep_from(std::uint64_t offset) {
  keeping_ = true;
  kept_from_ = offset;
  kept_.clear();
  const std::uint64_t skipped =
      std::min<std::uint64_t>(offset - chunk_start_.offset, chunk_.size());
  kept_.assign(chunk_.begin() + static_cast<std::ptrdiff_t>(skipped), chunk_.end());
}

std::string token_stream::take_kept(std::uint64_t offset) {
  keeping_ = false;
  kept_.resize(std::min<std::size_t>(kept_.size(), static_cast<std::size_t>(offset - kept_from_)));
  return std::exchange(kept_, {});
}

text_position token_stream::position_of(std::uint64_t offset) const {
  const bool in_chunk = offset >= chunk_start_.offset;
  const landmark& from = in_chunk ? chunk_start_ : previous_start_;
  const std::vector<char>& bytes = in_chunk ? chunk_ : previous_chunk_;
  text_position position{offset, from.line, from.column};
  if (offset < from.offset) return position;
  const auto size = std::min<std::uint64_t>(offset - from.offset, bytes.size());
  const std::string_view before(bytes.data(), static_cast<std::size_t>(size));
  const std::uint64_t breaks = line_breaks_in(before);
  position.line += breaks;
  position.column = breaks == 0 ? from.column + characters_in(before)
                                : 1 + characters_in(before.substr(before.rfind('\n') + 1));
  return position;
}

}  // namespace lmx

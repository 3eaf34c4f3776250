#include "lmx/token_batch.h"

#include <cstring>
#include <span>
#include <utility>

namespace lmx {

namespace {

// Whether a piece of text is one blank, once or repeated: a line break, or an indentation.
bool is_one_blank(std::string_view piece) {
  const char first = piece[0];
  if (first != ' ' && first != '\n' && first != '\t') return false;
  return piece.size() == 1 || std::memcmp(piece.data(), piece.data() + 1, piece.size() - 1) == 0;
}

}  // namespace

// Room for so many bytes more.
inline char* TokenBatch::grow_arena(std::size_t size) {
  if (arena_.size() - arena_end_ < size) [[unlikely]] {
    arena_.resize(2 * arena_.size() + size);
  }
  char* const room = arena_.data() + arena_end_;
  arena_end_ += size;
  return room;
}

inline TokenBatch::Span TokenBatch::keep_text(std::string_view text) {
  std::memcpy(grow_arena(text.size()), text.data(), text.size());
  return {arena_end_ - text.size(), text.size()};
}

inline TokenBatch::Record& TokenBatch::push(TokenKind kind, Span text, Extent extent) {
  return records_.emplace_back(Record{.kind = kind,
                                      .text = text,
                                      .offset = extent.offset,
                                      .end_offset = extent.offset + extent.size});
}

// Makes the blanks read since the last tag a token of their own, or forgets them.
inline void TokenBatch::settle_blanks(bool count) {
  const std::size_t runs = std::exchange(blank_runs_, 0);
  if (!count || runs == 0) return;
  const std::size_t begin = arena_end_;
  for (const BlankRun& run : std::span(blanks_).first(runs)) {
    std::memset(grow_arena(run.size), run.blank, run.size);
  }
  push(TokenKind::text, {begin, arena_end_ - begin}, {blanks_offset_, 0});
}

void TokenBatch::clear() {
  records_.clear();
  attributes_.clear();
  arena_end_ = 0;
  start_record_ = no_record;
}

void TokenBatch::add_start(std::string_view name, const char* const* attributes, Extent extent) {
  settle_blanks(false);
  const auto first = static_cast<std::uint32_t>(attributes_.size());
  bool declares = false;
  for (; *attributes != nullptr; attributes += 2) {
    const std::string_view attribute = attributes[0];
    declares = declares || attribute.starts_with("xmlns");
    attributes_.push_back({keep_text(attribute), keep_text(attributes[1])});
  }
  follows_start_ = true;
  start_record_ = records_.size();
  Record& made = push(TokenKind::start, keep_text(name), extent);
  made.prefixed = name.find(':') != std::string_view::npos;
  made.declares = declares;
  made.first_attribute = first;
  made.attribute_count = static_cast<std::uint32_t>(attributes_.size()) - first;
}

void TokenBatch::add_unreadable_start(std::string_view name, elmx_error error, Extent extent) {
  const char* const no_attributes[] = {nullptr};
  add_start(name, no_attributes, extent);
  records_.back().error = error;
}

void TokenBatch::add_end(std::string_view name, Extent extent) {
  settle_blanks(follows_start_);
  // Directly after its start the name stands in the arena already.
  const bool is_kept = follows_start_ && start_record_ != no_record;
  const Span text = is_kept ? records_[start_record_].text : keep_text(name);
  follows_start_ = false;
  push(TokenKind::end, text, extent);
  // The end of a tag that closes itself has no bytes of its own.
  if (extent.size == 0) {
    records_.back().self_closed = true;
    records_[records_.size() - 2].self_closed = true;
  }
}

void TokenBatch::add_text(std::string_view piece, std::uint64_t offset) {
  const bool is_new = records_.empty() || records_.back().kind != TokenKind::text;
  if (is_new && blank_runs_ < blanks_.size() && is_one_blank(piece)) {
    if (blank_runs_ == 0) blanks_offset_ = offset;
    blanks_[blank_runs_++] = {piece[0], piece.size()};
    return;
  }
  settle_blanks(true);
  if (records_.empty() || records_.back().kind != TokenKind::text) {
    push(TokenKind::text, {arena_end_, 0}, {offset, 0});
  }
  keep_text(piece);
  records_.back().text.size += piece.size();
}

void TokenBatch::add_fault(elmx_error error, std::string_view words, std::uint64_t offset) {
  settle_blanks(follows_start_);
  push(TokenKind::fault, keep_text(words), {offset, 0}).error = error;
}

}  // namespace lmx

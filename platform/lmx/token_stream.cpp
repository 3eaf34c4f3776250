#include "lmx/token_stream.h"

#include <algorithm>
#include <utility>

namespace lmx {

TokenStream::TokenStream(std::unique_ptr<ByteSource> source, std::size_t chunk_size)
    : source_(std::move(source)),
      positions_(*source_),
      parser_(batch_),
      chunk_size_(std::max<std::size_t>(chunk_size, 1)) {}

// Hands the next chunk to the parser.
void TokenStream::parse_some() {
  const auto unsettled = static_cast<std::size_t>(chunk_end() - parser_.settled());
  const bool is_kept_too_long = keeping_ && chunk_end() - kept_from_ > longest;
  // One byte beyond the limit is enough to tell that a piece is too long.
  const std::size_t room = std::max<std::size_t>(longest - unsettled, 1);
  chunk_begin_ = chunk_end();
  chunk_.resize(std::min(std::max(chunk_size_, unsettled), room));
  const std::ptrdiff_t got = source_->read(chunk_begin_, chunk_);
  chunk_.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
  if (got < 0) {
    parser_.fail(error_reading, "a read error");
  } else if (is_kept_too_long || unsettled + chunk_.size() > longest) {
    parser_.fail(error_too_long, too_long_words);
  } else {
    if (keeping_) kept_.append(chunk_.data(), chunk_.size());
    parser_.parse({chunk_.data(), chunk_.size()}, got == 0);
  }
}

void TokenStream::parse_until_token() {
  while (next_ >= batch_.size()) {
    if (parser_.is_at_root_end()) parser_.fail(error_truncated, "the end of the document");
    if (parser_.is_faulted() && batch_.size() > 0) {
      next_ = batch_.size() - 1;
      return;
    }
    batch_.clear();
    next_ = 0;
    if (parser_.is_paused()) {
      parser_.resume();
    } else {
      parse_some();
    }
  }
}

void TokenStream::keep_from(std::uint64_t offset) {
  keeping_ = true;
  kept_from_ = offset;
  const auto skipped = std::min<std::uint64_t>(offset - chunk_begin_, chunk_.size());
  kept_.assign(chunk_.begin() + static_cast<std::ptrdiff_t>(skipped), chunk_.end());
}

std::string TokenStream::take_kept(std::uint64_t offset) {
  keeping_ = false;
  kept_.resize(std::min<std::size_t>(kept_.size(), static_cast<std::size_t>(offset - kept_from_)));
  return std::exchange(kept_, {});
}

}  // namespace lmx

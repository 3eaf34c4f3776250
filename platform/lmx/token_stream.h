#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "lmx/byte_sources.h"
#include "lmx/expat_parser.h"
#include "lmx/text_position.h"
#include "lmx/token_batch.h"

namespace lmx {

// Tokens of a document, pulled one by one. The document is handed to the parser in chunks; only the
// tokens of the chunk parsed last, and that chunk's bytes, are held.
//
// A parser goes through an unfinished tag or comment from its start each time it gets more of it.
// So a chunk is as long as what the parser has of an unfinished piece, and never shorter than the
// stream's chunk size: pieces of any length are gone through a bounded number of times.
class TokenStream {
 public:
  // Bytes of an element's text, and of a stretch of the document from the end of one tag or text to
  // the end of the next tag or the start of the next text: a tag with the comments and processing
  // instructions before it. More is a fault, so memory stays bounded.
  static constexpr std::size_t longest = std::size_t{64} * 1024 * 1024;
  static constexpr const char* too_long_words = "more than 64 MiB in one piece";

  TokenStream(std::unique_ptr<ByteSource> source, std::size_t chunk_size);

  // The next token without taking it. A fault stays; after the root's end tag comes a fault of code
  // error_truncated. What the token shows lives until the next call of peek() that follows take().
  Token peek() {
    if (next_ >= batch_.size()) parse_until_token();
    return batch_[next_];
  }
  void take() { ++next_; }

  // An attribute by the number that its start token tells.
  AttributeToken attribute(std::size_t index) const { return batch_.attribute(index); }

  // Starts keeping the document's bytes from `offset` on, which lies in the chunk parsed last.
  void keep_from(std::uint64_t offset);
  // The bytes kept up to `offset`, which are then dropped.
  std::string take_kept(std::uint64_t offset);

  bool is_open() const { return source_->is_open(); }

  // Whether the document's bytes are UTF-8, so that raw parts of it can be handed out.
  bool is_utf8() const { return parser_.is_utf8(); }

  TextPosition position_of(std::uint64_t offset) { return positions_.position_of(offset); }

 private:
  void parse_until_token();
  void parse_some();
  std::uint64_t chunk_end() const { return chunk_begin_ + chunk_.size(); }

  std::unique_ptr<ByteSource> source_;
  PositionFinder positions_;
  TokenBatch batch_;
  ExpatParser parser_;
  std::size_t next_ = 0;  // token of the batch
  std::size_t chunk_size_;
  std::vector<char> chunk_;  // bytes parsed last
  std::uint64_t chunk_begin_ = 0;
  bool keeping_ = false;
  std::uint64_t kept_from_ = 0;
  std::string kept_;
};

}  // namespace lmx

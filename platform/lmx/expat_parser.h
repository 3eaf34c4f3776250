#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string_view>

#include "lmx/error.h"
#include "lmx/token_batch.h"

struct XML_ParserStruct;

namespace lmx {

// expat, and what its events make of a document: tokens, and one fault at the end. Document type
// declarations are faults. The codes of malformed documents are told in lmx/error.h.
class ExpatParser {
 public:
  static constexpr std::size_t deepest = 256;  // open elements; one more is a fault

  // Tokens go to `tokens`, which must outlive the parser.
  explicit ExpatParser(TokenBatch& tokens);
  ExpatParser(const ExpatParser&) = delete;
  ExpatParser& operator=(const ExpatParser&) = delete;

  // Goes on with the document's next bytes; the last of them, which may be none, end it. What is
  // unfinished at their end is kept, and gone through again with the bytes that follow.
  void parse(std::string_view bytes, bool is_last);

  // Few tokens are held at once, however long the bytes are: the parser pauses, and goes on with
  // the same bytes here.
  bool is_paused() const { return paused_; }
  void resume();

  // Ends the document with a fault, unless it has one already.
  void fail(elmx_error error, std::string_view words);

  bool is_faulted() const { return faulted_; }
  bool is_at_root_end() const { return ended_; }

  // The byte after the last tag or text.
  std::uint64_t settled() const { return settled_; }

  // Whether the document's bytes are UTF-8, as far as it has told.
  bool is_utf8() const { return is_utf8_; }

 private:
  // Tokens and attributes held at once, or a few more. A chunk of the usual size has fewer.
  static constexpr std::size_t most_held = 32768;

  struct Deleter {
    void operator()(XML_ParserStruct* parser) const;
  };
  struct Callbacks;

  Extent extent_here() const;
  void note_result(int status);
  void refuse_repeated_attribute();

  TokenBatch& tokens_;
  std::unique_ptr<XML_ParserStruct, Deleter> parser_;
  std::uint64_t settled_ = 0;
  std::size_t depth_ = 0;
  bool started_ = false;
  bool last_ = false;  // the bytes handed over last end the document
  bool paused_ = false;
  bool ended_ = false;
  bool faulted_ = false;
  bool is_utf8_ = true;
  std::exception_ptr thrown_;  // out of a callback, to be thrown on after the parser returned
};

}  // namespace lmx

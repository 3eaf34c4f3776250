#include "lmx/expat_parser.h"

#include <expat.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include <dlfcn.h>

namespace lmx {

namespace {

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

// Newer parsers put off an unfinished piece until they have twice as much of it. Chunks grow here
// already, and a parser that waits would make a piece look longer than it is. Asked for at run
// time, so that a build runs with the older parsers too, which never wait.
void parse_without_waiting(XML_Parser parser) {
  using Setter = XML_Bool(XMLCALL*)(XML_Parser, XML_Bool);
  const auto set = reinterpret_cast<Setter>(::dlsym(RTLD_DEFAULT, "XML_SetReparseDeferralEnabled"));
  if (set != nullptr) set(parser, XML_FALSE);
}

elmx_error code_of(XML_Error error) {
  switch (error) {
    case XML_ERROR_NO_ELEMENTS:
    case XML_ERROR_UNCLOSED_TOKEN:
      return error_truncated;
    case XML_ERROR_UNKNOWN_ENCODING:
    case XML_ERROR_INCORRECT_ENCODING:
      return error_encoding;
    default:
      return error_malformed;
  }
}

// A name that stands at the start of some markup, of a document in UTF-16 without its zero bytes.
std::string name_at_start_of(std::string_view markup) {
  std::string name(markup.substr(0, std::min<std::size_t>(markup.size(), 4096)));
  std::erase(name, '\0');
  name.resize(std::min(name.find_first_of(" \t\r\n=/>"), name.size()));
  return name;
}

}  // namespace

inline Extent ExpatParser::extent_here() const {
  return {static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_.get())),
          static_cast<std::uint64_t>(XML_GetCurrentByteCount(parser_.get()))};
}

// An exception must not cross the parser: it is kept, the parser is stopped, and note_result()
// throws it on.
struct ExpatParser::Callbacks {
  template <class Action>
  static void guard(void* user, Action action) {
    auto& self = *static_cast<ExpatParser*>(user);
    if (self.faulted_ || self.thrown_) return;
    try {
      action(self);
      if (self.tokens_.held() >= most_held && !self.paused_ && !self.faulted_) [[unlikely]] {
        self.paused_ = true;
        XML_StopParser(self.parser_.get(), XML_TRUE);
      }
    } catch (...) {
      self.thrown_ = std::current_exception();
      XML_StopParser(self.parser_.get(), XML_FALSE);
    }
  }

  static void XMLCALL start(void* user, const XML_Char* name, const XML_Char** attributes) {
    guard(user, [&](ExpatParser& self) {
      if (++self.depth_ > deepest) {
        self.fail(error_too_deep, "elements nested deeper than 256");
        return;
      }
      const Extent here = self.extent_here();
      self.settled_ = here.offset + here.size;
      self.tokens_.add_start(name, attributes, here);
    });
  }

  static void XMLCALL end(void* user, const XML_Char* name) {
    guard(user, [&](ExpatParser& self) {
      const Extent here = self.extent_here();
      self.settled_ = here.offset + here.size;
      self.tokens_.add_end(name, here);
      if (--self.depth_ == 0) self.ended_ = true;
    });
  }

  static void XMLCALL text(void* user, const XML_Char* characters, int length) {
    guard(user, [&](ExpatParser& self) {
      if (length == 0) return;
      const Extent here = self.extent_here();
      self.settled_ = here.offset + here.size;
      self.tokens_.add_text({characters, static_cast<std::size_t>(length)}, here.offset);
    });
  }

  static void XMLCALL doctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    guard(user, [&](ExpatParser& self) {
      self.fail(error_doctype, "a document type declaration, which is refused");
    });
  }

  static void XMLCALL declaration(void* user, const XML_Char*, const XML_Char* encoding, int) {
    guard(user, [&](ExpatParser& self) {
      if (encoding != nullptr && !names_utf8(encoding)) self.is_utf8_ = false;
    });
  }
};

ExpatParser::ExpatParser(TokenBatch& tokens) : tokens_(tokens), parser_(XML_ParserCreate(nullptr)) {
  if (parser_ == nullptr) throw std::bad_alloc();
  parse_without_waiting(parser_.get());
  XML_SetUserData(parser_.get(), this);
  XML_SetElementHandler(parser_.get(), &Callbacks::start, &Callbacks::end);
  XML_SetCharacterDataHandler(parser_.get(), &Callbacks::text);
  XML_SetStartDoctypeDeclHandler(parser_.get(), &Callbacks::doctype);
  XML_SetXmlDeclHandler(parser_.get(), &Callbacks::declaration);
}

void ExpatParser::Deleter::operator()(XML_ParserStruct* parser) const {
  XML_ParserFree(parser);
}

void ExpatParser::parse(std::string_view bytes, bool is_last) {
  if (!started_ && starts_as_utf16(bytes)) is_utf8_ = false;
  started_ = true;
  last_ = is_last;
  note_result(
      XML_Parse(parser_.get(), bytes.data(), static_cast<int>(bytes.size()), is_last ? 1 : 0));
}

void ExpatParser::resume() {
  paused_ = false;
  note_result(XML_ResumeParser(parser_.get()));
}

void ExpatParser::note_result(int status) {
  if (thrown_) std::rethrow_exception(thrown_);
  if (status == XML_STATUS_ERROR && !faulted_) {
    const XML_Error error = XML_GetErrorCode(parser_.get());
    if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    if (error == XML_ERROR_DUPLICATE_ATTRIBUTE) {
      refuse_repeated_attribute();
    } else {
      fail(code_of(error), XML_ErrorString(error));
    }
  }
  if (last_ && !paused_) fail(error_truncated, "the end of the document");
  tokens_.settle();
}

void ExpatParser::fail(elmx_error error, std::string_view words) {
  if (faulted_) return;
  faulted_ = true;
  const auto index = XML_GetCurrentByteIndex(parser_.get());
  tokens_.add_fault(error, words, index < 0 ? settled_ : static_cast<std::uint64_t>(index));
  XML_StopParser(parser_.get(), XML_FALSE);
}

// The parser stands on the second of two attributes of one name and tells nothing of the tag. It
// has all of the tag in its buffer, though: the element is told by its start, and its attributes as
// the fault.
void ExpatParser::refuse_repeated_attribute() {
  int place = 0;
  int size = 0;
  const char* const buffer = XML_GetInputContext(parser_.get(), &place, &size);
  const std::string_view bytes(buffer, buffer == nullptr ? 0 : static_cast<std::size_t>(size));
  const auto attribute = static_cast<std::size_t>(place);
  if (const auto open = bytes.rfind('<', attribute); open != std::string_view::npos) {
    const std::uint64_t begin = extent_here().offset - (attribute - open);
    tokens_.add_unreadable_start(name_at_start_of(bytes.substr(open + 1)), error_attribute_twice,
                                 {begin, attribute - open});
  }
  fail(error_attribute_twice, name_at_start_of(bytes.substr(std::min(attribute, bytes.size()))));
}

}  // namespace lmx

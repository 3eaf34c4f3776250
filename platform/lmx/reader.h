#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lmx/diagnostic.h"
#include "lmx/error.h"
#include "lmx/event.h"
#include "lmx/export.h"
#include "lmx/namespace_scope.h"

// The pull reader of annotation documents. It hands out one step of the document at a time and
// never holds more of it than the chunk being parsed and one value. Document type declarations are
// refused, so no entity is ever expanded. Allocation failures are exceptions; every other fault is
// a code.

namespace lmx {

class ByteSource;
class TokenStream;
struct Token;

// Names of the open elements, innermost last.
class c_string_stack {
 public:
  void push(const std::string& name) {
    if (size_ == names_.size()) names_.push_back(std::make_unique<std::string>());
    *names_[size_] = name;
    ++size_;
  }
  void pop() { --size_; }
  const std::string& back() const { return *names_[size_ - 1]; }

  // "/outer/inner" for the whole stack.
  std::string path() const;

 private:
  // A name stays where it is while the stack grows; popped ones keep their room for the next.
  std::vector<std::unique_ptr<std::string>> names_;
  std::size_t size_ = 0;
};

// Keeps a name on the stack for its own life.
class c_string_stack_node {
 public:
  c_string_stack_node(c_string_stack& stack, const std::string& name) : stack_(stack) {
    stack.push(name);
    name_ = &stack.back();
  }
  c_string_stack_node(const c_string_stack_node&) = delete;
  c_string_stack_node& operator=(const c_string_stack_node&) = delete;
  ~c_string_stack_node() { stack_.pop(); }

  const char* get_str() const { return name_->c_str(); }
  const std::string& str() const { return *name_; }
  bool operator!=(const std::string& name) const { return *name_ != name; }

 private:
  c_string_stack& stack_;
  const std::string* name_;
};

// The token level of a reader: attributes and character data at its place.
class LMX_API c_xml {
 public:
  static constexpr std::size_t default_chunk = 32768;  // bytes handed to the parser at once

  c_xml(std::unique_ptr<ByteSource> source, std::size_t chunk_size);
  c_xml(const c_xml&) = delete;
  c_xml& operator=(const c_xml&) = delete;
  ~c_xml();

  // The value of the attribute just reported, entities resolved. False when there is none to read.
  bool get_attribute_value(std::string* value, elmx_whitespace whitespace);

  // Consumes the value of the attribute just reported.
  bool skip_attribute_value();

  // Whether an attribute of that name belongs to the XML Schema instance namespace in the scope, or
  // declares a namespace.
  bool is_xsi_attribute(const c_xml_local* local, const std::string& name) const;

  // With the reader after a start tag: the character data up to the end tag, which stays unread.
  // False on a child element or malformed text. `flag` is always true: kept, not looked at.
  bool get_element_value(std::string* value, elmx_whitespace whitespace, bool flag);

 protected:
  void enter_start_tag(const Token& start);
  bool next_attribute(std::string* name);
  // Attributes end with their tag: the tokens that hold them may go with the next step.
  void leave_start_tag() { first_attribute_ = next_attribute_ = end_attribute_ = 0; }
  void leave_end_tag();

  std::unique_ptr<TokenStream> tokens_;
  c_xml_local scope_;
  std::size_t depth_ = 0;                // open elements
  bool start_closes_itself_ = false;     // of the start tag read last
  bool start_is_unreadable_ = false;     // likewise: its attributes are a fault, not told yet
  std::uint64_t place_ = 0;              // byte of the tag read last
  std::uint64_t content_place_ = 0;      // byte after the start tag read last
  elmx_error token_error_ = error_none;  // of a malformed text
  std::string token_words_;              // what the parser says of it

 private:
  // The attributes of the start tag read last, by their numbers in the token stream.
  std::size_t first_attribute_ = 0;
  std::size_t next_attribute_ = 0;
  std::size_t end_attribute_ = 0;
};

class LMX_API c_xml_reader : public c_xml {
 public:
  virtual ~c_xml_reader();

  int current_event = 0;       // of the last event call or tokenise
  std::string current_name;    // qualified name of the element reported last
  std::string local_name;      // the same without prefix
  std::string attribute_name;  // of the attribute reported last
  std::string value_text;      // scratch for values
  c_string_stack element_name_stack;
  c_xml_local* xml_local;  // the current element's scope

  // Sets the namespaces of the read. This schema has none, so the map is kept, not looked at.
  void set_ns_map(const s_ns_map* map);

  // Moves to the next element start or end, over prolog, comments, instructions and blanks. Sets
  // *name and current_event: 6 at an end tag, 7 at a start tag with `map` null, else the event of
  // the row with that name, or the closing row's. *error is 0 or the fault, the event is then 0.
  void get_element_event(const s_event_map* map, elmx_error* error, std::string* name);

  // In a start tag: true and *name for the next attribute. False when the tag ends: current_event
  // is then 6 if the tag closes itself, and 0 if not. In a tag that has an attribute twice, its
  // name alone is told, with *error set. `map` is always null: kept, not looked at.
  bool get_attribute_event(const s_event_map* map, elmx_error* error, std::string* name);

  // Classifies the current attribute's or element's name into current_event; consumes nothing.
  void tokenise(const s_event_map* map, elxp_attr_elem mode);

  // 1 for an element in no namespace, else 0.
  int get_element_ns_id() const { return element_ns_id_; }

  // A whole simple-typed element from its start tag up to and including its end tag. A child
  // element is error_unreadable_element, an attribute other than of the schema instance namespace
  // error_unknown_attribute.
  bool get_simple_type_value(const std::string& name, elmx_whitespace whitespace,
                             std::string* value, elmx_error* error, bool* no_value);

  // Likewise the whole inner markup, byte for byte as the document has it. *no_value is true for an
  // empty element. Only for UTF-8 documents: others are error_encoding.
  bool get_element_ur_value(const std::string& name, std::string* value, elmx_error* error,
                            bool* no_value);

  // The one policy point: keeps the first fault as a diagnostic and returns the code to go on with.
  // Without a policy that is `code` itself. `expected` says what should have stood there.
  // `source_tag` and `position`, the caller's place in the program, are kept, not looked at.
  elmx_error handle_error(elmx_error code, const std::string& name, const char* source_tag,
                          int position, std::string expected = {});

  // For a policy, from within it, that lets the fault of a text pass which holds an element or
  // stands under a refused attribute: goes on to where the read would be without the fault, after
  // the end tag of a simple-typed element and before that of another. False where the document
  // breaks off first.
  bool skip_refused_text();

  // The first fault of the read, null while there is none.
  const Diagnostic* diagnostic() const { return fault_ ? &*fault_ : nullptr; }

  // A policy sees each fault and answers 0 to go on, or a code to stop with.
  using Policy = std::function<elmx_error(const Diagnostic&)>;
  void set_policy(Policy new_policy) { policy_ = std::move(new_policy); }

 protected:
  c_xml_reader(std::unique_ptr<ByteSource> source, std::size_t chunk_size);

 private:
  void classify(const s_event_map* map, std::string_view name, int ns_id);
  bool refuse_attributes(elmx_error* error);
  void tell_fault_of_start_tag(elmx_error* error);
  bool finish_simple_element(elmx_error* error);
  std::string found_here(elmx_error code) const;

  int element_ns_id_ = 1;
  std::string simple_element_;  // name of the simple-typed element read last, until the next event
  bool in_simple_element_ = false;
  std::optional<Diagnostic> fault_;
  Policy policy_;
};

// Reads a regular file. Opening does not throw; is_open tells. A directory does not open.
class LMX_API c_xml_reader_file : public c_xml_reader {
 public:
  explicit c_xml_reader_file(const char* file_name, std::size_t chunk_size = default_chunk);
  bool is_open() const;
};

// Reads a buffer, which must outlive the reader; it needs no terminator.
class LMX_API c_xml_reader_memory : public c_xml_reader {
 public:
  c_xml_reader_memory(const char* data, std::size_t length, std::size_t chunk_size = default_chunk);
};

// Scope guard around an element's content: declarations of its children end with it, on every way
// out.
class LMX_API c_xml_reader_local {
 public:
  explicit c_xml_reader_local(c_xml_reader* reader);
  c_xml_reader_local(const c_xml_reader_local&) = delete;
  c_xml_reader_local& operator=(const c_xml_reader_local&) = delete;
  ~c_xml_reader_local();

 private:
  c_xml_local& scope_;
  std::size_t size_;
};

}  // namespace lmx

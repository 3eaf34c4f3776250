#include "lmx/reader.h"

#include <algorithm>
#include <cstring>

#include "lmx/token_stream.h"
#include "lmx/value.h"

namespace lmx {

namespace {

constexpr std::string_view instance_namespace = "http://www.w3.org/2001/XMLSchema-instance";

std::string_view prefix_of(std::string_view name) {
  const auto colon = name.find(':');
  return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view local_of(std::string_view name) {
  const auto colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::size_t leading_blanks(std::string_view text) {
  return std::min(text.find_first_not_of(" \t\r\n"), text.size());
}

// As much of a text of the document as a message holds.
std::string shortened(std::string_view text) {
  constexpr std::size_t longest = 60;
  if (text.size() <= longest) return std::string(text);
  return std::string(text.substr(0, longest)) + "...";
}

std::string quoted(std::string_view text) {
  return '"' + shortened(text) + '"';
}

std::string tag(std::string_view name) {
  return '<' + shortened(name) + '>';
}

}  // namespace

std::string c_string_stack::path() const {
  std::string path;
  for (std::size_t i = 0; i < size_; ++i) path += '/' + *names_[i];
  return path;
}

c_xml::c_xml(std::unique_ptr<ByteSource> source, std::size_t chunk_size)
    : tokens_(std::make_unique<TokenStream>(std::move(source), chunk_size)) {}

c_xml::~c_xml() = default;

// Takes over a start tag: its attributes, and the namespaces it declares.
void c_xml::enter_start_tag(const Token& start) {
  ++depth_;
  start_closes_itself_ = start.self_closed;
  start_is_unreadable_ = start.error != error_none;
  content_place_ = start.end_offset;
  first_attribute_ = next_attribute_ = start.first_attribute;
  end_attribute_ = first_attribute_ + start.attribute_count;
  if (!start.declares) return;
  for (std::size_t i = first_attribute_; i < end_attribute_; ++i) {
    const AttributeToken a = tokens_->attribute(i);
    if (a.name == "xmlns") scope_.declare({}, a.value, depth_);
    if (prefix_of(a.name) == "xmlns") scope_.declare(local_of(a.name), a.value, depth_);
  }
}

bool c_xml::next_attribute(std::string* name) {
  if (next_attribute_ == end_attribute_) return false;
  *name = tokens_->attribute(next_attribute_).name;
  ++next_attribute_;
  return true;
}

void c_xml::leave_end_tag() {
  scope_.leave(depth_);
  --depth_;
}

bool c_xml::get_attribute_value(std::string* value, elmx_whitespace whitespace) {
  if (next_attribute_ == first_attribute_) return false;
  *value = tokens_->attribute(next_attribute_ - 1).value;
  if (whitespace == whitespace_collapse) collapse(*value);
  return true;
}

bool c_xml::skip_attribute_value() {
  return next_attribute_ != first_attribute_;
}

bool c_xml::is_xsi_attribute(const c_xml_local* local, const std::string& name) const {
  const std::string_view prefix = prefix_of(name);
  if (name == "xmlns" || prefix == "xmlns") return true;
  return !prefix.empty() && local != nullptr && local->uri_of(prefix) == instance_namespace;
}

bool c_xml::get_element_value(std::string* value, elmx_whitespace whitespace, bool) {
  leave_start_tag();
  value->clear();
  for (;;) {
    const Token next = tokens_->peek();
    switch (next.kind) {
      case TokenKind::text:
        if (next.text.size() > TokenStream::longest - value->size()) {
          token_error_ = error_too_long;
          token_words_ = TokenStream::too_long_words;
          return false;
        }
        value->append(next.text);
        tokens_->take();
        break;
      case TokenKind::end:
        if (whitespace == whitespace_collapse) collapse(*value);
        return true;
      case TokenKind::start:
        token_error_ = error_unreadable_element;
        token_words_ = tag(next.text);
        return false;
      case TokenKind::fault:
        token_error_ = next.error;
        token_words_ = next.text;
        place_ = next.offset;
        return false;
    }
  }
}

c_xml_reader::c_xml_reader(std::unique_ptr<ByteSource> source, std::size_t chunk_size)
    : c_xml(std::move(source), chunk_size), xml_local(&scope_) {}

c_xml_reader::~c_xml_reader() = default;

void c_xml_reader::set_ns_map(const s_ns_map*) {}

void c_xml_reader::get_element_event(const s_event_map* map, elmx_error* error, std::string* name) {
  in_simple_element_ = false;
  token_error_ = error_none;
  leave_start_tag();
  for (;;) {
    const Token next = tokens_->peek();
    place_ = next.offset;
    switch (next.kind) {
      case TokenKind::text:
        if (const auto blanks = leading_blanks(next.text); blanks < next.text.size()) {
          place_ += blanks;
          token_words_ = "the text " + quoted(next.text);
          current_event = 0;
          *error = token_error_ = error_unexpected_text;
          return;
        }
        tokens_->take();
        break;
      case TokenKind::fault:
        token_words_ = next.text;
        current_event = 0;
        *error = token_error_ = next.error;
        return;
      case TokenKind::end:
        *name = next.text;
        current_event = event_end;
        *error = error_none;
        tokens_->take();
        leave_end_tag();
        return;
      case TokenKind::start:
        *name = next.text;
        local_name = next.prefixed ? local_of(next.text) : next.text;
        enter_start_tag(next);
        element_ns_id_ = !next.prefixed && scope_.uri_of({}).empty() ? 1 : 0;
        tokens_->take();
        *error = error_none;
        if (map == nullptr) {
          current_event = event_start;
        } else {
          classify(map, local_name, element_ns_id_);
        }
        return;
    }
  }
}

bool c_xml_reader::get_attribute_event(const s_event_map*, elmx_error* error, std::string* name) {
  *error = error_none;
  if (next_attribute(name)) return true;
  if (start_is_unreadable_) {
    tell_fault_of_start_tag(error);
    *name = tokens_->peek().text;
    return true;
  }
  current_event = 0;
  if (start_closes_itself_) {
    // The end belongs to the tag just left and comes directly after it.
    tokens_->peek();
    tokens_->take();
    leave_end_tag();
    current_event = event_end;
  }
  return false;
}

void c_xml_reader::classify(const s_event_map* map, std::string_view name, int ns_id) {
  for (; map->name != nullptr; ++map) {
    if (map->name_length == name.size() && map->name[0] == name[0] && map->ns_id == ns_id &&
        std::memcmp(map->name, name.data(), name.size()) == 0) {
      break;
    }
  }
  current_event = map->event;
}

void c_xml_reader::tokenise(const s_event_map* map, elxp_attr_elem mode) {
  if (mode == current_element) {
    classify(map, local_of(current_name), element_ns_id_);
  } else {
    // Attributes are in no namespace unless they have a prefix, which no row's name has.
    classify(map, attribute_name, 1);
  }
}

// The fault of a start tag that has an attribute twice is the token after it.
void c_xml_reader::tell_fault_of_start_tag(elmx_error* error) {
  start_is_unreadable_ = false;
  const Token fault = tokens_->peek();
  place_ = fault.offset;
  token_words_ = "attribute " + shortened(fault.text);
  *error = token_error_ = fault.error;
}

bool c_xml_reader::refuse_attributes(elmx_error* error) {
  if (start_is_unreadable_) {
    tell_fault_of_start_tag(error);
    return true;
  }
  std::string name;
  while (next_attribute(&name)) {
    if (is_xsi_attribute(xml_local, name)) continue;
    token_words_ = "attribute " + shortened(name);
    *error = token_error_ = error_unknown_attribute;
    return true;
  }
  return false;
}

// Takes the end tag after a value.
bool c_xml_reader::finish_simple_element(elmx_error* error) {
  *error = error_none;
  tokens_->take();
  leave_end_tag();
  return true;
}

bool c_xml_reader::get_simple_type_value(const std::string& name, elmx_whitespace whitespace,
                                         std::string* value, elmx_error* error, bool* no_value) {
  in_simple_element_ = true;
  simple_element_ = name;
  if (refuse_attributes(error)) return false;
  if (!get_element_value(value, whitespace, true)) {
    *error = token_error_;
    return false;
  }
  *no_value = value->empty();
  return finish_simple_element(error);
}

bool c_xml_reader::get_element_ur_value(const std::string& name, std::string* value,
                                        elmx_error* error, bool* no_value) {
  in_simple_element_ = true;
  simple_element_ = name;
  if (refuse_attributes(error)) return false;
  if (!tokens_->is_utf8()) {
    token_words_ = "inner markup in a document that is not UTF-8";
    *error = token_error_ = error_encoding;
    return false;
  }
  leave_start_tag();
  tokens_->keep_from(content_place_);
  for (std::size_t inner = 0;;) {
    const Token next = tokens_->peek();
    if (next.kind == TokenKind::fault) {
      token_words_ = next.text;
      place_ = next.offset;
      *error = token_error_ = next.error;
      return false;
    }
    if (next.offset - content_place_ > TokenStream::longest) {
      token_words_ = TokenStream::too_long_words;
      *error = token_error_ = error_too_long;
      return false;
    }
    if (next.kind == TokenKind::start) ++inner;
    if (next.kind == TokenKind::end && inner-- == 0) break;
    tokens_->take();
  }
  *value = start_closes_itself_ ? std::string() : tokens_->take_kept(tokens_->peek().offset);
  *no_value = value->empty();
  return finish_simple_element(error);
}

bool c_xml_reader::skip_refused_text() {
  leave_start_tag();
  for (std::size_t inner = 0;;) {
    const Token next = tokens_->peek();
    if (next.kind == TokenKind::fault) return false;
    if (next.kind == TokenKind::start) ++inner;
    if (next.kind == TokenKind::end && inner-- == 0) break;
    tokens_->take();
  }
  elmx_error error{};
  return !in_simple_element_ || finish_simple_element(&error);
}

// What stands at the reader's place, for a fault of that code.
std::string c_xml_reader::found_here(elmx_error code) const {
  if (token_error_ != error_none) return token_words_;
  switch (code) {
    case error_too_long:
    case error_invalid_value:
    case error_above_upper_bound:
    case error_below_lower_bound:
    case error_not_in_enumeration:
      return quoted(value_text);
    case error_unknown_attribute:
    case error_attribute_twice:
      return "attribute " + shortened(attribute_name);
    case error_required_element_missing:
    case error_element_not_ended:
    case error_wrong_root:
    case error_no_choice_present:
      return (current_event == event_end ? "</" : "<") + shortened(current_name) + '>';
    default:
      return {};
  }
}

elmx_error c_xml_reader::handle_error(elmx_error code, const std::string& name, const char*, int,
                                      std::string expected) {
  const bool first = !fault_.has_value();
  if (!first && !policy_) return code;
  const TextPosition at = tokens_->position_of(place_);
  std::string path = element_name_stack.path();
  if (in_simple_element_) path += '/' + simple_element_;
  Diagnostic seen{code,
                  name,
                  at.offset,
                  at.line,
                  at.column,
                  std::move(path),
                  found_here(code),
                  std::move(expected)};
  const elmx_error result = policy_ ? policy_(seen) : code;
  if (first) fault_ = std::move(seen);
  return result;
}

c_xml_reader_file::c_xml_reader_file(const char* file_name, std::size_t chunk_size)
    : c_xml_reader(std::make_unique<FileSource>(file_name), chunk_size) {}

bool c_xml_reader_file::is_open() const {
  return tokens_->is_open();
}

c_xml_reader_memory::c_xml_reader_memory(const char* data, std::size_t length,
                                         std::size_t chunk_size)
    : c_xml_reader(std::make_unique<MemorySource>(data, length), chunk_size) {}

c_xml_reader_local::c_xml_reader_local(c_xml_reader* reader)
    : scope_(*reader->xml_local), size_(scope_.size()) {}

c_xml_reader_local::~c_xml_reader_local() {
  scope_.shrink(size_);
}

}  // namespace lmx

#include "gridkit/record_decoder.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "gridkit/error.h"
#include "gridkit/records/dictionary_text.h"
#include "gridkit/records/little_endian.h"
#include "gridkit/records/record_design.h"

namespace gridkit {

namespace {

RecordDesign find_design(std::string_view dictionary, std::string_view type) {
  std::vector<RecordDesign> designs = parse_dictionary(dictionary);
  const auto found = std::ranges::find(designs, type, &RecordDesign::name);
  if (found == designs.end()) throw Error("the dictionary has no design " + quoted(type));
  return std::move(*found);
}

using Value = decltype(DecodedField::value);

class Decoder {
 public:
  explicit Decoder(std::span<const std::byte> bytes) : bytes_(bytes) {}

  Value decode(const RecordField& field) {
    field_ = &field;
    switch (field.type) {
      case gkd_Enumeration:
        return item();
      case gkd_Character:
        return std::bit_cast<char>(*take(1));
      case gkd_Integer:
        return integer();
      case gkd_Double:
        return real(take(8));
      case gkd_DoubleArray:
        return doubles(field.count);
      case gkd_DoubleVector:
        break;
    }
    const std::size_t place = offset_;
    const std::int32_t count = integer();
    if (count < 0) fault(place, "a count of " + std::to_string(count));
    return doubles(count);
  }

  void expect_end() const {
    if (offset_ != bytes_.size()) {
      throw Error(std::to_string(bytes_.size()) + " bytes are given, the fields end at byte " +
                  std::to_string(offset_));
    }
  }

 private:
  [[noreturn]] void fault(std::size_t place, const std::string& what) const {
    throw Error("field " + quoted(field_->name) + " at byte " + std::to_string(place) + ": " +
                what);
  }

  const std::byte* take(std::size_t size) {
    const std::size_t left = bytes_.size() - offset_;
    if (size > left) {
      fault(offset_,
            std::to_string(size) + " bytes are expected, " + std::to_string(left) + " are left");
    }
    return bytes_.data() + std::exchange(offset_, offset_ + size);
  }

  std::int32_t integer() {
    return std::bit_cast<std::int32_t>(load_little_endian<std::uint32_t>(take(4)));
  }

  static double real(const std::byte* bytes) {
    return std::bit_cast<double>(load_little_endian<std::uint64_t>(bytes));
  }

  std::vector<double> doubles(std::int32_t count) {
    const std::byte* bytes = take(8 * static_cast<std::size_t>(count));
    std::vector<double> values(static_cast<std::size_t>(count));
    for (double& value : values) value = real(std::exchange(bytes, bytes + 8));
    return values;
  }

  EnumerationItem item() {
    const std::size_t place = offset_;
    const std::int32_t number = integer();
    const auto& items = field_->items;
    if (number < 0 || static_cast<std::size_t>(number) >= items.size()) {
      fault(place, "there is no item " + std::to_string(number) + " among " +
                       std::to_string(items.size()));
    }
    return {number, items[static_cast<std::size_t>(number)]};
  }

  std::span<const std::byte> bytes_;
  std::size_t offset_ = 0;
  const RecordField* field_ = nullptr;
};

class Encoder {
 public:
  void encode(const RecordField& field, const DecodedField& given) {
    field_ = &field;
    switch (field.type) {
      case gkd_Enumeration:
        put(as<EnumerationItem>(given, "an item of an enumeration"));
        return;
      case gkd_Character:
        put(std::bit_cast<std::uint8_t>(as<char>(given, "a character")));
        return;
      case gkd_Integer:
        put(std::bit_cast<std::uint32_t>(as<std::int32_t>(given, "an integer")));
        return;
      case gkd_Double:
        put(std::bit_cast<std::uint64_t>(as<double>(given, "a double")));
        return;
      case gkd_DoubleArray:
      case gkd_DoubleVector:
        put(as<std::vector<double>>(given, "doubles"));
        return;
    }
  }

  std::vector<std::byte> take() { return std::move(bytes_); }

 private:
  [[noreturn]] void fault(const std::string& what) const {
    throw Error("field " + quoted(field_->name) + ": " + what);
  }

  template <class Type>
  const Type& as(const DecodedField& given, const char* what) const {
    const Type* value = std::get_if<Type>(&given.value);
    if (value == nullptr) fault(std::string("expected ") + what);
    return *value;
  }

  template <std::unsigned_integral Number>
  void put(Number number) {
    reserve(sizeof number);
    const std::size_t place = bytes_.size();
    bytes_.resize(place + sizeof number);
    store_little_endian(number, bytes_.data() + place);
  }

  void put(const EnumerationItem& item) {
    const auto index = static_cast<std::size_t>(item.number);
    if (item.number < 0 || index >= field_->items.size() || field_->items[index] != item.text) {
      fault("there is no item " + std::to_string(item.number) + " " + quoted(item.text));
    }
    put(std::bit_cast<std::uint32_t>(item.number));
  }

  void put(const std::vector<double>& values) {
    reserve(4 + 8 * values.size());
    if (field_->type == gkd_DoubleVector) {
      put(static_cast<std::uint32_t>(values.size()));
    } else if (values.size() != static_cast<std::size_t>(field_->count)) {
      fault(std::to_string(values.size()) + " elements are given for " +
            std::to_string(field_->count));
    }
    for (const double value : values) put(std::bit_cast<std::uint64_t>(value));
  }

  void reserve(std::size_t size) const {
    if (size > largest_record - bytes_.size()) {
      fault("the record would have more than " + std::to_string(largest_record) + " bytes");
    }
  }

  std::vector<std::byte> bytes_;
  const RecordField* field_ = nullptr;
};

// Does the work on a record; failures name its design.
template <class Work>
auto naming(const RecordDesign& design, const Work& work) {
  try {
    return work();
  } catch (const Error& error) {
    throw Error("record of the design " + quoted(design.name) + ": " + error.what());
  }
}

}  // namespace

std::vector<DecodedField> decode_record(std::string_view dictionary, std::string_view type,
                                        std::span<const std::byte> bytes) {
  const RecordDesign design = find_design(dictionary, type);
  return naming(design, [&] {
    Decoder decoder(bytes);
    std::vector<DecodedField> fields;
    for (const RecordField& field : design.fields) {
      fields.push_back({field.name, decoder.decode(field)});
    }
    decoder.expect_end();
    return fields;
  });
}

std::vector<std::byte> encode_record(std::string_view dictionary, std::string_view type,
                                     std::span<const DecodedField> fields) {
  const RecordDesign design = find_design(dictionary, type);
  return naming(design, [&] {
    if (fields.size() != design.fields.size()) {
      throw Error(std::to_string(fields.size()) + " fields are given for " +
                  std::to_string(design.fields.size()));
    }
    Encoder encoder;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].name != design.fields[i].name) {
        throw Error("expected the field " + quoted(design.fields[i].name) + ", not " +
                    quoted(fields[i].name));
      }
      encoder.encode(design.fields[i], fields[i]);
    }
    return encoder.take();
  });
}

}  // namespace gridkit

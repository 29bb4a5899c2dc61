// Strict JSON decoding, encoding and description for the kit's records.
//
// A record is a plain struct that lists its members once, in declared order:
//
//   struct Example {
//     static constexpr std::string_view kName = "Example";
//     std::optional<std::int64_t> id;
//     std::optional<std::string> title;
//     template <class Self, class Visit>
//     static void fields(Self& self, Visit&& visit) {
//       visit("id", self.id);
//       visit("title", self.title);
//     }
//   };
//
// Member types: std::optional of bool, std::int64_t, double, std::string, a
// record, or std::vector of records; a plain `bool` member is required.
//
// Decoding rules: the input must be one JSON object; a key that is absent or
// holds null leaves its member absent (a required member then fails the
// decode); a value of another JSON type than the member's fails the whole
// decode; keys no member names are ignored. Integers must fit 64 bits. A number
// written with a decimal point but an integral value (5.0, 1e2) is accepted for
// an integer member: the platform decoders this kit grew up with judge the
// value, not its spelling, and a service that writes 5.0 means 5. A fraction
// (5.5) fails.
//
// Failure texts are stable sentences that name the member and what was wrong,
// e.g. `The data couldn't be read because "data.oboloBidId" should be an
// integer but is a string.` They are what the API client hands to onFailure.

#ifndef OBOLO_PLATFORM_JSON_RECORD_H_
#define OBOLO_PLATFORM_JSON_RECORD_H_

#include <cmath>
#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/number_format.h"

namespace obolo {

// Lets the codec make an empty record of a type whose only public constructor
// takes every member (a record with a required member). Such a type declares
// `friend struct JsonRecordAccess;` and a private default constructor.
struct JsonRecordAccess {
  template <class T>
  static T Make() {
    return T{};
  }
};

namespace json_record_detail {
struct NullVisit {
  template <class T>
  void operator()(std::string_view, T&) const {}
};
}  // namespace json_record_detail

template <class T>
concept JsonRecord = requires(T& value) {
  { T::kName } -> std::convertible_to<std::string_view>;
  T::fields(value, json_record_detail::NullVisit{});
};

// The outcome of a decode: a record, or the sentence that says why not.
template <class T>
class DecodeResult {
 public:
  // A decoded record, or the sentence saying why there is none.
  static DecodeResult success(T value) { return DecodeResult(std::move(value), {}); }
  static DecodeResult failure(std::string error) { return DecodeResult(std::nullopt, std::move(error)); }

  // Whether a record was decoded.
  bool ok() const { return value_.has_value(); }
  explicit operator bool() const { return ok(); }
  // REQUIRES: ok().
  const T& value() const& { return *value_; }
  T&& value() && { return std::move(*value_); }
  // Empty when ok().
  const std::string& error() const { return error_; }

 private:
  DecodeResult(std::optional<T> value, std::string error) : value_(std::move(value)), error_(std::move(error)) {}
  std::optional<T> value_;
  std::string error_;
};

namespace json_record_detail {

using Json = nlohmann::json;

inline std::string CannotRead(const std::string& reason) {
  return "The data couldn't be read because " + reason + ".";
}

inline std::string Quoted(const std::string& path) { return "\"" + path + "\""; }

inline std::string Join(const std::string& path, std::string_view key) {
  return path.empty() ? std::string(key) : path + "." + std::string(key);
}

inline const char* Article(std::string_view noun) {
  return (!noun.empty() && std::string_view("aeiou").find(noun[0]) != std::string_view::npos) ? "an" : "a";
}

inline std::string KindOf(const Json& value) {
  switch (value.type()) {
    case Json::value_t::string:
      return "a string";
    case Json::value_t::boolean:
      return "a boolean";
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return "an integer";
    case Json::value_t::number_float:
      return "a number";
    case Json::value_t::array:
      return "an array";
    case Json::value_t::object:
      return "an object";
    default:
      return "null";
  }
}

inline std::string Mismatch(const std::string& path, std::string_view expected, const Json& value) {
  return CannotRead(Quoted(path) + " should be " + Article(expected) + " " + std::string(expected) + " but is " +
                    KindOf(value));
}

// Reads one JSON object into a record's members, stopping at the first fault.
class Decoder {
 public:
  Decoder(const Json& object, std::string path) : object_(object), path_(std::move(path)) {}

  std::optional<std::string> error;

  void operator()(std::string_view key, bool& member) {
    if (error) return;
    const Json* value = Find(key);
    if (value == nullptr) {
      error = CannotRead(Quoted(Join(path_, key)) + " is missing");
    } else if (!value->is_boolean()) {
      error = Mismatch(Join(path_, key), "boolean", *value);
    } else {
      member = value->get<bool>();
    }
  }

  void operator()(std::string_view key, std::optional<bool>& member) {
    if (const Json* value = Present(key)) {
      if (!value->is_boolean()) return Fail(Mismatch(Join(path_, key), "boolean", *value));
      member = value->get<bool>();
    }
  }

  void operator()(std::string_view key, std::optional<std::int64_t>& member) {
    if (const Json* value = Present(key)) {
      const std::string path = Join(path_, key);
      switch (value->type()) {
        case Json::value_t::number_integer:
          member = value->get<std::int64_t>();
          return;
        case Json::value_t::number_unsigned: {
          const auto number = value->get<std::uint64_t>();
          if (number > static_cast<std::uint64_t>(INT64_MAX)) return Fail(TooLarge(path));
          member = static_cast<std::int64_t>(number);
          return;
        }
        case Json::value_t::number_float: {
          const double number = value->get<double>();
          if (std::isfinite(number) && std::trunc(number) != number) {
            return Fail(CannotRead(Quoted(path) + " should be an integer but is a number with a fraction"));
          }
          // Strictly inside the range: an integer literal just below the
          // smallest 64-bit value arrives rounded to exactly -2^63.
          if (!(number > -9223372036854775808.0 && number < 9223372036854775808.0)) return Fail(TooLarge(path));
          member = static_cast<std::int64_t>(number);
          return;
        }
        default:
          return Fail(Mismatch(path, "integer", *value));
      }
    }
  }

  void operator()(std::string_view key, std::optional<double>& member) {
    if (const Json* value = Present(key)) {
      if (!value->is_number()) return Fail(Mismatch(Join(path_, key), "number", *value));
      member = value->get<double>();
    }
  }

  void operator()(std::string_view key, std::optional<std::string>& member) {
    if (const Json* value = Present(key)) {
      if (!value->is_string()) return Fail(Mismatch(Join(path_, key), "string", *value));
      member = *value->get_ptr<const Json::string_t*>();
    }
  }

  template <JsonRecord R>
  void operator()(std::string_view key, std::optional<R>& member) {
    if (const Json* value = Present(key)) {
      const std::string path = Join(path_, key);
      if (!value->is_object()) return Fail(Mismatch(path, "object", *value));
      R nested = JsonRecordAccess::Make<R>();
      Decoder inner(*value, path);
      R::fields(nested, inner);
      if (inner.error) return Fail(std::move(*inner.error));
      member = std::move(nested);
    }
  }

  template <JsonRecord R>
  void operator()(std::string_view key, std::optional<std::vector<R>>& member) {
    if (const Json* value = Present(key)) {
      const std::string path = Join(path_, key);
      if (!value->is_array()) return Fail(Mismatch(path, "array", *value));
      std::vector<R> elements;
      elements.reserve(value->size());
      for (size_t i = 0; i < value->size(); ++i) {
        const Json& element = (*value)[i];
        const std::string element_path = path + "[" + std::to_string(i) + "]";
        if (!element.is_object()) return Fail(Mismatch(element_path, "object", element));
        R nested = JsonRecordAccess::Make<R>();
        Decoder inner(element, element_path);
        R::fields(nested, inner);
        if (inner.error) return Fail(std::move(*inner.error));
        elements.push_back(std::move(nested));
      }
      member = std::move(elements);
    }
  }

 private:
  static std::string TooLarge(const std::string& path) {
    return CannotRead(Quoted(path) + " is a number that does not fit a 64-bit integer");
  }

  const Json* Find(std::string_view key) const {
    auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return nullptr;
    return &*it;
  }
  // The member's value when decoding should go on and the key holds one.
  const Json* Present(std::string_view key) const { return error ? nullptr : Find(key); }
  void Fail(std::string text) { error = std::move(text); }

  const Json& object_;
  std::string path_;
};

class Encoder {
 public:
  nlohmann::ordered_json object = nlohmann::ordered_json::object();

  void operator()(std::string_view key, const bool& member) { object[std::string(key)] = member; }
  template <class T>
  void operator()(std::string_view key, const std::optional<T>& member) {
    if (member) object[std::string(key)] = Encode(*member);
  }

 private:
  template <class T>
  static nlohmann::ordered_json Encode(const T& value) {
    if constexpr (JsonRecord<T>) {
      Encoder inner;
      T::fields(value, inner);
      return std::move(inner.object);
    } else if constexpr (requires { typename T::value_type; } && !std::is_same_v<T, std::string>) {
      auto array = nlohmann::ordered_json::array();
      for (const auto& element : value) array.push_back(Encode(element));
      return array;
    } else {
      return value;
    }
  }
};

inline void AppendQuoted(std::string& out, const std::string& text) {
  out += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// Writes "Name(member: value, ...)", absent members as nil.
class Describer {
 public:
  explicit Describer(std::string& out) : out_(out) {}

  template <class T>
  void operator()(std::string_view key, const T& member) {
    out_ += first_ ? "" : ", ";
    first_ = false;
    out_ += key;
    out_ += ": ";
    Write(member);
  }

  template <class T>
  void Write(const std::optional<T>& value) {
    if (value) {
      Write(*value);
    } else {
      out_ += "nil";
    }
  }
  void Write(bool value) { out_ += value ? "true" : "false"; }
  void Write(std::int64_t value) { out_ += std::to_string(value); }
  void Write(double value) { out_ += ShortestDecimal(value); }
  void Write(const std::string& value) { AppendQuoted(out_, value); }
  template <JsonRecord R>
  void Write(const R& record) {
    out_ += R::kName;
    out_ += "(";
    Describer inner(out_);
    R::fields(record, inner);
    out_ += ")";
  }
  template <JsonRecord R>
  void Write(const std::vector<R>& records) {
    out_ += "[";
    for (size_t i = 0; i < records.size(); ++i) {
      if (i > 0) out_ += ", ";
      Write(records[i]);
    }
    out_ += "]";
  }

 private:
  std::string& out_;
  bool first_ = true;
};

}  // namespace json_record_detail

// Decodes one record from JSON text.
template <JsonRecord T>
DecodeResult<T> DecodeRecord(std::string_view text) {
  using json_record_detail::CannotRead;
  const auto document = nlohmann::json::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
  if (document.is_discarded()) {
    return DecodeResult<T>::failure(
        CannotRead(text.empty() ? std::string("the data is empty") : std::string("it isn't valid JSON")));
  }
  if (!document.is_object()) {
    return DecodeResult<T>::failure(
        CannotRead("the top level is " + json_record_detail::KindOf(document) + ", not an object"));
  }
  T record = JsonRecordAccess::Make<T>();
  json_record_detail::Decoder decoder(document, "");
  T::fields(record, decoder);
  if (decoder.error) return DecodeResult<T>::failure(std::move(*decoder.error));
  return DecodeResult<T>::success(std::move(record));
}

// The record as a JSON object with the same keys, absent members left out.
template <JsonRecord T>
nlohmann::ordered_json EncodeRecordJson(const T& record) {
  json_record_detail::Encoder encoder;
  T::fields(record, encoder);
  return std::move(encoder.object);
}

// The record as compact JSON text; text that is not UTF-8 becomes U+FFFD.
template <JsonRecord T>
std::string EncodeRecord(const T& record) {
  return EncodeRecordJson(record).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The record's full field-by-field description, for diagnostics.
template <JsonRecord T>
std::string DescribeRecord(const T& record) {
  std::string out;
  json_record_detail::Describer(out).Write(record);
  return out;
}

}  // namespace obolo

#endif  // OBOLO_PLATFORM_JSON_RECORD_H_

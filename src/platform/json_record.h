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
// decode; keys no member names are ignored, and a key written twice counts
// once, with its last value. Integers must fit 64 bits. A number written with
// a decimal point but an integral value (5.0, 1e2) is accepted for an integer
// member: the platform decoders this kit grew up with judge the value, not its
// spelling, and a service that writes 5.0 means 5. A fraction (5.5) fails.
// Malformed text anywhere fails the decode, also inside a value no member
// reads. When several members fail, the first in declared order is reported.
//
// Limits: whatever its shape, an answer costs bounded memory and time. Text
// longer than kMaxJsonBytes, nesting deeper than kMaxJsonDepth (objects and
// arrays, counted from the top-level object) and an array of records with more
// than kMaxJsonArrayRecords elements fail the decode. Each limit is far above
// what the service sends: its largest answer is a few kilobytes, its records
// nest four deep, and a balance answer carries a handful of recommendations.
//
// Failure texts are stable sentences that name the member and what was wrong,
// e.g. `The data couldn't be read because "data.oboloBidId" should be an
// integer but is a string.` They are what the API client hands to onFailure.
//
// Decoding reads the text with simdjson's On-Demand parser straight into the
// records, without building a document tree (platform/json_record_decoder.h);
// encoding and descriptions use nlohmann-json. Decoding is instantiated for
// the kit's own records only, where each is defined.

#ifndef OBOLO_PLATFORM_JSON_RECORD_H_
#define OBOLO_PLATFORM_JSON_RECORD_H_

#include <concepts>
#include <cstddef>
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
struct DecodeAccess;
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

// The decoder's limits (see above).
inline constexpr std::size_t kMaxJsonBytes = std::size_t{1} << 20;
inline constexpr int kMaxJsonDepth = 64;
inline constexpr std::size_t kMaxJsonArrayRecords = 4096;

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
  friend struct json_record_detail::DecodeAccess;  // fills a successful result's record in place
  DecodeResult(std::optional<T> value, std::string error) : value_(std::move(value)), error_(std::move(error)) {}
  std::optional<T> value_;
  std::string error_;
};

namespace json_record_detail {

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

// Decodes one record from JSON text. The text is copied once, into a buffer
// with the room after it that the parser reads ahead into.
template <JsonRecord T>
DecodeResult<T> DecodeRecord(std::string_view text);

// The same for text the caller owns, such as an answer's body: the room is made
// at the end of the string itself, so large text is not copied. `text` reads
// the same afterwards (its capacity may have grown).
template <JsonRecord T>
DecodeResult<T> DecodeRecordInPlace(std::string& text);
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

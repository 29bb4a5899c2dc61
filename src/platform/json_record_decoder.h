// The decoder behind DecodeRecord (platform/json_record.h): simdjson's
// On-Demand parser read straight into the records, with no document tree.
//
// Include it only in the .cc file that defines a record's decoding (the
// response records, the token payload) and instantiate DecodeRecord and
// DecodeRecordInPlace there: the parser's header is large, and no other file
// of the kit needs it.
//
// One pass over the text, in document order. Each key is matched to its member
// and its value read into it, or the member's failure is noted; a key written
// again replaces what the earlier one left, failure included. When the object
// ends, the failure of the first member in declared order is the record's.
// Values that no member reads, and values of the wrong type, are walked to
// their end as well, so malformed text anywhere fails as "isn't valid JSON"
// before any member's failure counts, and nesting is limited everywhere.
//
// Thread-safe: each thread decodes with a parser of its own.

#ifndef OBOLO_PLATFORM_JSON_RECORD_DECODER_H_
#define OBOLO_PLATFORM_JSON_RECORD_DECODER_H_

#include <simdjson.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/json_record.h"

namespace obolo {
namespace json_record_detail {

namespace ondemand = simdjson::ondemand;

// Why a walk stopped before the end: the decode then fails whatever the
// members held.
enum class Halt { kNone, kInvalid, kTooDeep };

struct Walk {
  Halt halt = Halt::kNone;
  int depth = 0;  // objects and arrays open around the current value

  // Always false, so callers can `return walk.Stop(...)`.
  bool Stop(Halt why) {
    halt = why;
    return false;
  }
  // Opens an object or array; false (halted) past kMaxJsonDepth.
  bool Enter() { return ++depth <= kMaxJsonDepth || Stop(Halt::kTooDeep); }
  void Leave() { --depth; }
};

// Where a value sits, as a chain up to the top-level object. It becomes text
// ("data.recommendations[1].articleId") only for a failure.
struct Path {
  static constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);
  const Path* parent = nullptr;  // none for the top-level object
  std::string_view key;          // a member's key, or
  std::size_t index = kNoIndex;  // an array element's index

  std::string Text() const;
};

// The failure sentences.
std::string CannotRead(std::string_view reason);
std::string Mismatch(const Path& path, std::string_view expected, std::string_view kind);
std::string Missing(const Path& path);
std::string Fraction(const Path& path);
std::string TooLarge(const Path& path);
std::string TooManyElements(const Path& path);
std::string HaltText(Halt halt);

// The JSON type of a value as the failure texts name it ("a string", "an
// integer", "null", ...). Leaves the value unread. An integer that does not
// fit 64 bits is "a number", like any number with a fraction or exponent.
std::string_view KindOf(ondemand::value& value, ondemand::json_type type);

// Reads and checks a whole value, whatever it holds, to its end. False when
// the walk halted (malformed text, too deep).
bool SkipValue(ondemand::value& value, Walk& walk);
// A member's key, unescaped when it holds escapes. False when halted.
bool ReadKey(ondemand::field& field, std::string_view& key, Walk& walk);
// Any JSON number as a double (integers beyond 64 bits and exponents of any
// length included). False when halted: not a number, or beyond a double's range.
bool ReadNumber(ondemand::value& value, double& number, Walk& walk);
// A null, checked in full. False when halted.
bool ReadNull(ondemand::value& value, Walk& walk);

// The member failures of one record, kept until its object ends.
class MemberFailures {
 public:
  void Set(unsigned index, std::string text);
  void Clear(unsigned index) {
    if (Failed(index)) Erase(index);
  }
  bool Failed(unsigned index) const { return failed_ & (std::uint64_t{1} << index); }
  // The first in declared order; empty when none.
  std::string First() &&;

 private:
  void Erase(unsigned index);
  std::uint64_t failed_ = 0;
  std::vector<std::pair<unsigned, std::string>> texts_;
};

// The text to parse, with at least simdjson::SIMDJSON_PADDING readable bytes after it,
// and the parser it is read with: the thread's own for answers of ordinary
// size, a parser of its own (released afterwards) for long text.
class Document {
 public:
  Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // Parses the text's structure. False with `failure` set when the text is
  // empty, too long or malformed. `length` counts the text; `capacity` the
  // readable bytes from `data` on.
  bool Open(const char* data, std::size_t length, std::size_t capacity, std::string& failure);
  // The top-level object. False with `failure` set when the top level is
  // something else (or malformed).
  bool RootObject(ondemand::object& object, std::string& failure);
  // True when nothing follows the top-level value.
  bool AtEnd();

 private:
  std::unique_ptr<ondemand::parser> own_parser_;
  ondemand::document document_;
  const char* end_ = nullptr;  // of the text
};

// Text copied into the thread's buffer, with room after it. The view stays
// valid until the thread's next decode.
std::string_view PaddedCopy(std::string_view text, std::size_t& capacity);

template <JsonRecord R>
bool ReadRecord(ondemand::object& object, const Path& path, Walk& walk, R& record, std::string& failure);

// A value of the wrong type: named, then walked to its end.
inline bool Mismatched(ondemand::value& value, ondemand::json_type type, const Path& path,
                       std::string_view expected, Walk& walk, std::string& failure) {
  const std::string_view kind = KindOf(value, type);
  if (!SkipValue(value, walk)) return false;
  failure = Mismatch(path, expected, kind);
  return true;
}

// Reads one value into a member. False when the walk halted; otherwise
// `failure` is set when the value does not fit the member. A null leaves the
// member absent.
inline bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<bool>& member,
                       std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::boolean) return Mismatched(value, type, path, "boolean", walk, failure);
  bool read = false;
  if (value.get_bool().get(read)) return walk.Stop(Halt::kInvalid);
  member = read;
  return true;
}

inline bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<std::int64_t>& member,
                       std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::number) return Mismatched(value, type, path, "integer", walk, failure);
  std::int64_t integer = 0;
  if (!value.get_int64().get(integer)) {
    member = integer;
    return true;
  }
  // A fraction, an exponent, or an integer beyond 64 bits: judged by value.
  double number = 0;
  if (!ReadNumber(value, number, walk)) return false;
  if (std::trunc(number) != number) {
    failure = Fraction(path);
  } else if (!(number > -9223372036854775808.0 && number < 9223372036854775808.0)) {
    // Strictly inside: an integer just below the smallest 64-bit value rounds
    // to exactly -2^63 as a double.
    failure = TooLarge(path);
  } else {
    member = static_cast<std::int64_t>(number);
  }
  return true;
}

inline bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<double>& member,
                       std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::number) return Mismatched(value, type, path, "number", walk, failure);
  double number = 0;
  if (!ReadNumber(value, number, walk)) return false;
  member = number;
  return true;
}

inline bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<std::string>& member,
                       std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::string) return Mismatched(value, type, path, "string", walk, failure);
  std::string_view text;
  if (value.get_string().get(text)) return walk.Stop(Halt::kInvalid);
  member.emplace(text);
  return true;
}

template <JsonRecord R>
bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<R>& member,
                std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::object) return Mismatched(value, type, path, "object", walk, failure);
  ondemand::object object;
  if (value.get_object().get(object)) return walk.Stop(Halt::kInvalid);
  R nested = JsonRecordAccess::Make<R>();
  if (!ReadRecord(object, path, walk, nested, failure)) return false;
  if (failure.empty()) member = std::move(nested);
  return true;
}

template <JsonRecord R>
bool ReadMember(ondemand::value& value, const Path& path, Walk& walk, std::optional<std::vector<R>>& member,
                std::string& failure) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  if (type == ondemand::json_type::null) {
    member.reset();
    return ReadNull(value, walk);
  }
  if (type != ondemand::json_type::array) return Mismatched(value, type, path, "array", walk, failure);
  ondemand::array array;
  if (value.get_array().get(array)) return walk.Stop(Halt::kInvalid);
  if (!walk.Enter()) return false;
  std::vector<R> elements;
  std::size_t index = 0;
  for (auto item : array) {
    ondemand::value element;
    if (std::move(item).get(element)) return walk.Stop(Halt::kInvalid);
    const Path element_path{&path, {}, index++};
    // After a failure the rest is only checked, not kept.
    if (!failure.empty()) {
      if (!SkipValue(element, walk)) return false;
      continue;
    }
    if (elements.size() == kMaxJsonArrayRecords) {
      failure = TooManyElements(path);
      if (!SkipValue(element, walk)) return false;
      continue;
    }
    ondemand::json_type element_type;
    if (element.type().get(element_type)) return walk.Stop(Halt::kInvalid);
    if (element_type != ondemand::json_type::object) {
      if (!Mismatched(element, element_type, element_path, "object", walk, failure)) return false;
      continue;
    }
    ondemand::object object;
    if (element.get_object().get(object)) return walk.Stop(Halt::kInvalid);
    R nested = JsonRecordAccess::Make<R>();
    if (!ReadRecord(object, element_path, walk, nested, failure)) return false;
    if (failure.empty()) elements.push_back(std::move(nested));
  }
  walk.Leave();
  if (failure.empty()) member = std::move(elements);
  return true;
}

// Offered each member of a record in declared order; reads the value into the
// one whose key matches.
class FieldReader {
 public:
  FieldReader(std::string_view key, ondemand::value& value, const Path& parent, Walk& walk,
              MemberFailures& failures, std::uint64_t& present)
      : key_(key), value_(value), parent_(parent), walk_(walk), failures_(failures), present_(present) {}

  bool matched() const { return matched_; }

  template <class Member>
  void operator()(std::string_view name, Member& member) {
    if (matched_) return;
    if (name.size() != key_.size() || name != key_) {
      ++index_;
      return;
    }
    matched_ = true;
    const Path path{&parent_, name};
    std::string failure;
    if constexpr (std::is_same_v<Member, bool>) {
      // Required: present only while the key holds a boolean.
      std::optional<bool> read;
      if (!ReadMember(value_, path, walk_, read, failure)) return;
      if (read) {
        member = *read;
        present_ |= std::uint64_t{1} << index_;
      } else {
        present_ &= ~(std::uint64_t{1} << index_);
      }
    } else {
      if (!ReadMember(value_, path, walk_, member, failure)) return;
    }
    if (failure.empty()) {
      failures_.Clear(index_);
    } else {
      failures_.Set(index_, std::move(failure));
    }
  }

 private:
  std::string_view key_;
  ondemand::value& value_;
  const Path& parent_;
  Walk& walk_;
  MemberFailures& failures_;
  std::uint64_t& present_;
  unsigned index_ = 0;
  bool matched_ = false;
};

// After the object: a required member that no key filled fails.
class RequiredCheck {
 public:
  RequiredCheck(const Path& parent, MemberFailures& failures, std::uint64_t present)
      : parent_(parent), failures_(failures), present_(present) {}

  template <class Member>
  void operator()(std::string_view name, Member&) {
    if constexpr (std::is_same_v<Member, bool>) {
      // A value of the wrong type has said so already.
      if (!(present_ & (std::uint64_t{1} << index_)) && !failures_.Failed(index_)) {
        failures_.Set(index_, Missing(Path{&parent_, name}));
      }
    }
    ++index_;
  }

 private:
  const Path& parent_;
  MemberFailures& failures_;
  std::uint64_t present_;
  unsigned index_ = 0;
};

// Reads one object into `record`. False when the walk halted; otherwise
// `failure` holds the first failing member's sentence, or is empty.
template <JsonRecord R>
bool ReadRecord(ondemand::object& object, const Path& path, Walk& walk, R& record, std::string& failure) {
  if (!walk.Enter()) return false;
  MemberFailures failures;
  std::uint64_t present = 0;
  for (auto item : object) {
    ondemand::field field;
    if (std::move(item).get(field)) return walk.Stop(Halt::kInvalid);
    std::string_view key;
    if (!ReadKey(field, key, walk)) return false;
    FieldReader reader(key, field.value(), path, walk, failures, present);
    R::fields(record, reader);
    if (walk.halt != Halt::kNone) return false;
    if (!reader.matched() && !SkipValue(field.value(), walk)) return false;
  }
  walk.Leave();
  R::fields(record, RequiredCheck(path, failures, present));
  failure = std::move(failures).First();
  return true;
}

template <JsonRecord T>
DecodeResult<T> DecodePadded(const char* data, std::size_t length, std::size_t capacity) {
  Document document;
  std::string failure;
  ondemand::object object;
  if (!document.Open(data, length, capacity, failure) || !document.RootObject(object, failure)) {
    return DecodeResult<T>::failure(std::move(failure));
  }
  T record = JsonRecordAccess::Make<T>();
  Walk walk;
  const Path top;
  if (!ReadRecord(object, top, walk, record, failure)) return DecodeResult<T>::failure(HaltText(walk.halt));
  if (!document.AtEnd()) return DecodeResult<T>::failure(HaltText(Halt::kInvalid));
  if (!failure.empty()) return DecodeResult<T>::failure(std::move(failure));
  return DecodeResult<T>::success(std::move(record));
}

}  // namespace json_record_detail

template <JsonRecord T>
DecodeResult<T> DecodeRecord(std::string_view text) {
  std::size_t capacity = 0;
  const std::string_view padded = json_record_detail::PaddedCopy(text, capacity);
  return json_record_detail::DecodePadded<T>(padded.data(), padded.size(), capacity);
}

template <JsonRecord T>
DecodeResult<T> DecodeRecordInPlace(std::string& text) {
  const std::size_t length = text.size();
  // Text the decoder refuses anyway is not grown first.
  if (length == 0 || length > kMaxJsonBytes) return json_record_detail::DecodePadded<T>(text.data(), length, length);
  // The room is written (not merely reserved), so every byte the parser may
  // read ahead into is initialised.
  text.resize(length + simdjson::SIMDJSON_PADDING);
  auto result = json_record_detail::DecodePadded<T>(text.data(), length, text.size());
  text.resize(length);
  return result;
}

}  // namespace obolo

#endif  // OBOLO_PLATFORM_JSON_RECORD_DECODER_H_

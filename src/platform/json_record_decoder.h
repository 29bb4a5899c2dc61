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
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/json_record.h"
#include "platform/no_destructor.h"

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
// True when the number is written without a fraction or exponent.
bool IsIntegerToken(ondemand::value& value);

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
  // "-0" is the integer zero, whose double has no sign; "-0.0" keeps its.
  if (number == 0 && std::signbit(number) && IsIntegerToken(value)) number = 0.0;
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
  // Read in place; a record that fails is not kept.
  if constexpr (std::is_default_constructible_v<R>) {
    member.emplace();
  } else {
    member = JsonRecordAccess::Make<R>();
  }
  if (!ReadRecord(object, path, walk, *member, failure)) return false;
  if (!failure.empty()) member.reset();
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
  std::vector<R>& elements = member.emplace();
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
    if constexpr (std::is_default_constructible_v<R>) {
      elements.emplace_back();
    } else {
      elements.push_back(JsonRecordAccess::Make<R>());
    }
    if (!ReadRecord(object, element_path, walk, elements.back(), failure)) return false;
  }
  walk.Leave();
  if (!failure.empty()) member.reset();
  return true;
}

// One field's key, as the text writes it. Compared as written, which holds
// for any key without escapes; a key with escapes is compared unescaped.
class FieldKey {
 public:
  explicit FieldKey(const char* raw) : raw_(raw) {}

  bool Matches(std::string_view name) const {
    if (escaped_) return name == unescaped_;
    // The text holds at least the rest of the object and the parser's room
    // after it, so the byte after a name's length is there to read.
    return raw_[name.size()] == '"' && std::memcmp(raw_, name.data(), name.size()) == 0;
  }
  // For a key no member matched as written: true (and from then on compared
  // unescaped) when it has escapes. False when halted.
  bool Unescape(ondemand::field& field, Walk& walk, bool& has_escapes);

 private:
  const char* raw_;
  bool escaped_ = false;
  std::string_view unescaped_;
};

// Reads a value into the member at `member`. False when halted; `failure`
// set when the value does not fit; `present` set when a required member got
// its value.
using MemberReader = bool (*)(void* member, ondemand::value& value, const Path& path, Walk& walk,
                              std::string& failure, bool& present);

template <class Member>
bool ReadErased(void* member, ondemand::value& value, const Path& path, Walk& walk, std::string& failure,
                bool& present) {
  if constexpr (std::is_same_v<Member, bool>) {
    std::optional<bool> read;
    if (!ReadMember(value, path, walk, read, failure)) return false;
    present = read.has_value();
    if (read) *static_cast<bool*>(member) = *read;
    return true;
  } else {
    return ReadMember(value, path, walk, *static_cast<Member*>(member), failure);
  }
}

struct MemberEntry {
  std::string_view name;
  std::size_t offset;  // of the member in the record
  bool required;
  MemberReader read;
};

// The member named by `key`, searched from `next` on first (the service
// writes members in declared order), or -1. False when halted.
bool FindMember(const std::vector<MemberEntry>& members, FieldKey& key, unsigned next, ondemand::field& field,
                Walk& walk, int& found);

// A record's members in declared order, with where each sits and how it is
// read; made once per record type from its member list. Never destroyed: the
// session thread may still be decoding an answer while the process exits.
template <JsonRecord R>
const std::vector<MemberEntry>& MembersOf() {
  static const NoDestructor<std::vector<MemberEntry>> members([] {
    std::vector<MemberEntry> list;
    R sample = JsonRecordAccess::Make<R>();
    const char* const base = reinterpret_cast<const char*>(&sample);
    R::fields(sample, [&](std::string_view name, auto& member) {
      using Member = std::remove_reference_t<decltype(member)>;
      list.push_back({name, static_cast<std::size_t>(reinterpret_cast<const char*>(&member) - base),
                      std::is_same_v<Member, bool>, &ReadErased<Member>});
    });
    return list;
  }());
  return *members;
}

// Reads one object into `record`, which starts empty. False when the walk
// halted; otherwise `failure` holds the first failing member's sentence, or
// is empty. A record has at most 64 members.
template <JsonRecord R>
bool ReadRecord(ondemand::object& object, const Path& path, Walk& walk, R& record, std::string& failure) {
  const std::vector<MemberEntry>& members = MembersOf<R>();
  char* const base = reinterpret_cast<char*>(&record);
  if (!walk.Enter()) return false;
  MemberFailures failures;
  std::uint64_t present = 0;
  unsigned next = 0;  // the member after the one matched last
  for (auto item : object) {
    ondemand::field field;
    if (std::move(item).get(field)) return walk.Stop(Halt::kInvalid);
    FieldKey key(field.key().raw());
    int found = -1;
    if (!FindMember(members, key, next, field, walk, found)) return false;
    if (found < 0) {
      if (!SkipValue(field.value(), walk)) return false;
      continue;
    }
    const auto index = static_cast<unsigned>(found);
    const MemberEntry& member = members[index];
    const Path member_path{&path, member.name};
    std::string member_failure;
    bool member_present = false;
    if (!member.read(base + member.offset, field.value(), member_path, walk, member_failure, member_present)) {
      return false;
    }
    const std::uint64_t bit = std::uint64_t{1} << index;
    present = member_present ? present | bit : present & ~bit;
    if (member_failure.empty()) {
      failures.Clear(index);
    } else {
      failures.Set(index, std::move(member_failure));
    }
    next = index + 1;
  }
  walk.Leave();
  // A required member that no key filled fails, unless a value of the wrong
  // type has said so already.
  for (unsigned index = 0; index < members.size(); ++index) {
    if (members[index].required && !(present & (std::uint64_t{1} << index)) && !failures.Failed(index)) {
      failures.Set(index, Missing(Path{&path, members[index].name}));
    }
  }
  failure = std::move(failures).First();
  return true;
}

// Fills a successful result's record in place.
struct DecodeAccess {
  template <class T>
  static T& Value(DecodeResult<T>& result) {
    return *result.value_;
  }
};

template <JsonRecord T>
DecodeResult<T> DecodePadded(const char* data, std::size_t length, std::size_t capacity) {
  Document document;
  std::string failure;
  ondemand::object object;
  if (!document.Open(data, length, capacity, failure) || !document.RootObject(object, failure)) {
    return DecodeResult<T>::failure(std::move(failure));
  }
  auto result = DecodeResult<T>::success(JsonRecordAccess::Make<T>());
  Walk walk;
  const Path top;
  if (!ReadRecord(object, top, walk, DecodeAccess::Value(result), failure)) {
    return DecodeResult<T>::failure(HaltText(walk.halt));
  }
  if (!document.AtEnd()) return DecodeResult<T>::failure(HaltText(Halt::kInvalid));
  if (!failure.empty()) return DecodeResult<T>::failure(std::move(failure));
  return result;
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

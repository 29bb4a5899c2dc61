#include "platform/json_record_decoder.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <initializer_list>
#include <system_error>

namespace obolo {
namespace json_record_detail {
namespace {

// Text up to this length is parsed with the thread's own parser, which keeps
// its buffers (about six bytes per byte of text) for the next answer. Longer
// text gets a parser of its own, released afterwards, so one long answer does
// not leave megabytes behind on the session's thread.
constexpr std::size_t kReusedParserBytes = 64 * 1024;

ondemand::parser& ThreadParser() {
  thread_local ondemand::parser parser;
  return parser;
}

// The pieces joined. (Built by appending: GCC 12 at -O3 warns falsely about
// chains of std::string's operator+.)
std::string Join(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (std::string_view piece : pieces) text.append(piece);
  return text;
}

std::string_view Article(std::string_view noun) {
  return (!noun.empty() && std::string_view("aeiou").find(noun[0]) != std::string_view::npos) ? "an" : "a";
}

std::string Quoted(const Path& path) { return Join({"\"", path.Text(), "\""}); }

std::string_view TrimTrailingSpace(std::string_view token) {
  while (!token.empty() && (token.back() == ' ' || token.back() == '\t' || token.back() == '\n' ||
                            token.back() == '\r')) {
    token.remove_suffix(1);
  }
  return token;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// True for an integer literal (no fraction, no exponent) within 64 bits,
// signed or unsigned: the numbers a JSON reader keeps as integers.
bool IsIntegerLiteralWithin64Bits(std::string_view token) {
  const bool negative = !token.empty() && token.front() == '-';
  if (negative) token.remove_prefix(1);
  if (token.empty() || !std::all_of(token.begin(), token.end(), IsDigit)) return false;
  const std::string_view limit = negative ? "9223372036854775808" : "18446744073709551615";
  return token.size() < limit.size() || (token.size() == limit.size() && token <= limit);
}

// The parts of a JSON number: -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
struct NumberParts {
  bool negative = false;
  std::string_view integer, fraction, exponent_digits;
  bool exponent_negative = false;
};

bool SplitNumber(std::string_view token, NumberParts& parts) {
  std::size_t at = 0;
  auto digits = [&] {
    const std::size_t start = at;
    while (at < token.size() && IsDigit(token[at])) ++at;
    return token.substr(start, at - start);
  };
  if (at < token.size() && token[at] == '-') {
    parts.negative = true;
    ++at;
  }
  parts.integer = digits();
  if (parts.integer.empty() || (parts.integer.size() > 1 && parts.integer.front() == '0')) return false;
  if (at < token.size() && token[at] == '.') {
    ++at;
    parts.fraction = digits();
    if (parts.fraction.empty()) return false;
  }
  if (at < token.size() && (token[at] == 'e' || token[at] == 'E')) {
    ++at;
    if (at < token.size() && (token[at] == '+' || token[at] == '-')) parts.exponent_negative = token[at++] == '-';
    parts.exponent_digits = digits();
    if (parts.exponent_digits.empty()) return false;
  }
  return at == token.size();
}

// A number simdjson does not read: one whose exponent has more than 19
// digits (simdjson stops there; the grammar has no limit), or one beyond a
// double's range. The first is read here; the second is refused, as every
// JSON reader this kit has used refuses it, while a value too small for a
// double reads as zero.
bool ReadLongExponent(std::string_view token, double& number) {
  NumberParts parts;
  if (!SplitNumber(token, parts)) return false;
  std::string_view exponent = parts.exponent_digits;
  while (exponent.size() > 1 && exponent.front() == '0') exponent.remove_prefix(1);
  const bool mantissa_zero = std::all_of(parts.integer.begin(), parts.integer.end(), [](char c) { return c == '0'; }) &&
                             std::all_of(parts.fraction.begin(), parts.fraction.end(), [](char c) { return c == '0'; });
  // An exponent of 19 digits or more outweighs any mantissa that fits the
  // text: the value is zero or beyond a double.
  if (mantissa_zero || (exponent.size() > 18 && parts.exponent_negative)) {
    number = parts.negative ? -0.0 : 0.0;
    return true;
  }
  if (exponent.size() > 18) return false;
  std::string normal(parts.negative ? "-" : "");
  normal.append(parts.integer);
  if (!parts.fraction.empty()) normal.append(".").append(parts.fraction);
  if (!parts.exponent_digits.empty()) normal.append(parts.exponent_negative ? "e-" : "e").append(exponent);
  const auto [end, error] = std::from_chars(normal.data(), normal.data() + normal.size(), number);
  if (end != normal.data() + normal.size()) return false;
  if (error == std::errc::result_out_of_range) {
    // Too large or too small: which, by the place of the first significant
    // digit (10^adjusted <= |value| < 10^(adjusted+1)).
    long long adjusted = 0;
    const std::size_t leading = parts.integer.find_first_not_of('0');
    if (leading != std::string_view::npos) {
      adjusted = static_cast<long long>(parts.integer.size() - leading) - 1;
    } else {
      adjusted = -static_cast<long long>(parts.fraction.find_first_not_of('0')) - 1;
    }
    long long shift = 0;
    std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift);
    adjusted += parts.exponent_negative ? -shift : shift;
    if (adjusted > 0) return false;
    number = parts.negative ? -0.0 : 0.0;
    return true;
  }
  return error == std::errc();
}

// A number at the top level, read from its token.
bool ReadNumberToken(std::string_view token, double& number) {
  NumberParts parts;
  if (!SplitNumber(token, parts)) return false;
  if (parts.exponent_digits.size() > 19) return ReadLongExponent(token, number);
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), number);
  if (end != token.data() + token.size()) return false;
  if (error == std::errc::result_out_of_range) return ReadLongExponent(token, number);
  return error == std::errc();
}

std::string_view NumberKind(std::string_view token) {
  return IsIntegerLiteralWithin64Bits(TrimTrailingSpace(token)) ? "an integer" : "a number";
}

}  // namespace

std::string Path::Text() const {
  if (parent == nullptr) return std::string();
  std::string text = parent->Text();
  if (index != kNoIndex) {
    text.append("[").append(std::to_string(index)).append("]");
  } else {
    if (!text.empty()) text.append(".");
    text.append(key);
  }
  return text;
}

std::string CannotRead(std::string_view reason) { return Join({"The data couldn't be read because ", reason, "."}); }

std::string Mismatch(const Path& path, std::string_view expected, std::string_view kind) {
  return CannotRead(Join({Quoted(path), " should be ", Article(expected), " ", expected, " but is ", kind}));
}

std::string Missing(const Path& path) { return CannotRead(Join({Quoted(path), " is missing"})); }

std::string Fraction(const Path& path) {
  return CannotRead(Join({Quoted(path), " should be an integer but is a number with a fraction"}));
}

std::string TooLarge(const Path& path) {
  return CannotRead(Join({Quoted(path), " is a number that does not fit a 64-bit integer"}));
}

std::string TooManyElements(const Path& path) {
  return CannotRead(Join({Quoted(path), " has more than ", std::to_string(kMaxJsonArrayRecords), " elements"}));
}

std::string HaltText(Halt halt) {
  if (halt == Halt::kTooDeep) {
    return CannotRead(Join({"it is nested more than ", std::to_string(kMaxJsonDepth), " levels deep"}));
  }
  return CannotRead("it isn't valid JSON");
}

std::string_view KindOf(ondemand::value& value, ondemand::json_type type) {
  switch (type) {
    case ondemand::json_type::string:
      return "a string";
    case ondemand::json_type::boolean:
      return "a boolean";
    case ondemand::json_type::number:
      return NumberKind(value.raw_json_token());
    case ondemand::json_type::array:
      return "an array";
    case ondemand::json_type::object:
      return "an object";
    case ondemand::json_type::null:
      break;
  }
  return "null";
}

bool ReadNull(ondemand::value& value, Walk& walk) {
  bool is_null = false;
  if (value.is_null().get(is_null) || !is_null) return walk.Stop(Halt::kInvalid);
  return true;
}

bool IsIntegerToken(ondemand::value& value) {
  return TrimTrailingSpace(value.raw_json_token()).find_first_of(".eE") == std::string_view::npos;
}

bool ReadNumber(ondemand::value& value, double& number, Walk& walk) {
  if (!value.get_double().get(number)) return true;
  // Left unread by simdjson; the enclosing object or array steps over it.
  if (!ReadLongExponent(TrimTrailingSpace(value.raw_json_token()), number)) return walk.Stop(Halt::kInvalid);
  return true;
}

bool ReadKey(ondemand::field& field, std::string_view& key, Walk& walk) {
  // The structure is checked already: a closing quote follows.
  const char* const start = field.key().raw();
  const char* end = start;
  while (*end != '"' && *end != '\\') ++end;
  if (*end == '"') {
    key = std::string_view(start, static_cast<std::size_t>(end - start));
    return true;
  }
  if (field.unescaped_key().get(key)) return walk.Stop(Halt::kInvalid);
  return true;
}

bool FieldKey::Unescape(ondemand::field& field, Walk& walk, bool& has_escapes) {
  // The structure is checked already: a closing quote follows.
  const char* end = raw_;
  while (*end != '"' && *end != '\\') ++end;
  has_escapes = *end == '\\';
  if (!has_escapes) return true;
  if (field.unescaped_key().get(unescaped_)) return walk.Stop(Halt::kInvalid);
  escaped_ = true;
  return true;
}

bool FindMember(const std::vector<MemberEntry>& members, FieldKey& key, unsigned next, ondemand::field& field,
                Walk& walk, int& found) {
  const auto count = static_cast<unsigned>(members.size());
  for (unsigned i = 0; i < count; ++i) {
    const unsigned index = next + i < count ? next + i : next + i - count;
    if (key.Matches(members[index].name)) {
      found = static_cast<int>(index);
      return true;
    }
  }
  bool has_escapes = false;
  if (!key.Unescape(field, walk, has_escapes)) return false;
  if (has_escapes) {
    for (unsigned index = 0; index < count; ++index) {
      if (key.Matches(members[index].name)) {
        found = static_cast<int>(index);
        return true;
      }
    }
  }
  found = -1;
  return true;
}

bool SkipValue(ondemand::value& value, Walk& walk) {
  ondemand::json_type type;
  if (value.type().get(type)) return walk.Stop(Halt::kInvalid);
  switch (type) {
    case ondemand::json_type::object: {
      ondemand::object object;
      if (value.get_object().get(object)) return walk.Stop(Halt::kInvalid);
      if (!walk.Enter()) return false;
      for (auto item : object) {
        ondemand::field field;
        std::string_view key;
        if (std::move(item).get(field)) return walk.Stop(Halt::kInvalid);
        if (!ReadKey(field, key, walk) || !SkipValue(field.value(), walk)) return false;
      }
      walk.Leave();
      return true;
    }
    case ondemand::json_type::array: {
      ondemand::array array;
      if (value.get_array().get(array)) return walk.Stop(Halt::kInvalid);
      if (!walk.Enter()) return false;
      for (auto item : array) {
        ondemand::value element;
        if (std::move(item).get(element)) return walk.Stop(Halt::kInvalid);
        if (!SkipValue(element, walk)) return false;
      }
      walk.Leave();
      return true;
    }
    case ondemand::json_type::string: {
      std::string_view text;
      return !value.get_string().get(text) || walk.Stop(Halt::kInvalid);
    }
    case ondemand::json_type::number: {
      double number = 0;
      return ReadNumber(value, number, walk);
    }
    case ondemand::json_type::boolean: {
      bool flag = false;
      return !value.get_bool().get(flag) || walk.Stop(Halt::kInvalid);
    }
    case ondemand::json_type::null:
      return ReadNull(value, walk);
  }
  return walk.Stop(Halt::kInvalid);
}

void MemberFailures::Set(unsigned index, std::string text) {
  const std::uint64_t bit = std::uint64_t{1} << index;
  if (failed_ & bit) {
    for (auto& [member, sentence] : texts_) {
      if (member == index) sentence = std::move(text);
    }
    return;
  }
  failed_ |= bit;
  texts_.emplace_back(index, std::move(text));
}

void MemberFailures::Erase(unsigned index) {
  failed_ &= ~(std::uint64_t{1} << index);
  std::erase_if(texts_, [index](const auto& entry) { return entry.first == index; });
}

std::string MemberFailures::First() && {
  if (texts_.empty()) return std::string();
  auto first = std::min_element(texts_.begin(), texts_.end(),
                                [](const auto& a, const auto& b) { return a.first < b.first; });
  return std::move(first->second);
}

std::string_view PaddedCopy(std::string_view text, std::size_t& capacity) {
  // Text the decoder refuses anyway is not copied.
  if (text.empty() || text.size() > kMaxJsonBytes) {
    capacity = text.size();
    return text;
  }
  thread_local std::string buffer;
  if (text.size() > kReusedParserBytes) {
    // Not kept for the thread: grown for this text, released at its next use.
    std::string().swap(buffer);
  }
  buffer.assign(text);
  buffer.resize(text.size() + simdjson::SIMDJSON_PADDING);
  capacity = buffer.size();
  return std::string_view(buffer.data(), text.size());
}

bool Document::Open(const char* data, std::size_t length, std::size_t capacity, std::string& failure) {
  if (length == 0) {
    failure = CannotRead("the data is empty");
    return false;
  }
  if (length > kMaxJsonBytes) {
    failure = CannotRead(Join({"the data is larger than ", std::to_string(kMaxJsonBytes >> 20), " MiB"}));
    return false;
  }
  // A byte-order mark may open the text; a NUL byte ends it (inside a string
  // it leaves that string unclosed). JSON readers the kit has used do both.
  if (length >= 3 && std::memcmp(data, "\xEF\xBB\xBF", 3) == 0) {
    data += 3;
    length -= 3;
    capacity -= 3;
  }
  if (const void* nul = std::memchr(data, '\0', length)) length = static_cast<std::size_t>(static_cast<const char*>(nul) - data);

  end_ = data + length;
  ondemand::parser* parser = &ThreadParser();
  if (length > kReusedParserBytes) {
    own_parser_ = std::make_unique<ondemand::parser>();
    parser = own_parser_.get();
  }
  if (parser->iterate(data, length, capacity).get(document_)) {
    failure = HaltText(Halt::kInvalid);
    return false;
  }
  return true;
}

bool Document::RootObject(ondemand::object& object, std::string& failure) {
  ondemand::json_type type;
  if (document_.type().get(type)) {
    failure = HaltText(Halt::kInvalid);
    return false;
  }
  if (type == ondemand::json_type::object) {
    if (document_.get_object().get(object)) {
      failure = HaltText(Halt::kInvalid);
      return false;
    }
    return true;
  }

  // Anything else fails; malformed text says so first, as for an object.
  Walk walk;
  std::string_view kind = "null";
  bool valid = false;
  switch (type) {
    case ondemand::json_type::array: {
      kind = "an array";
      ondemand::value value;
      valid = !document_.get_value().get(value) && SkipValue(value, walk);
      break;
    }
    case ondemand::json_type::string: {
      kind = "a string";
      std::string_view text;
      valid = !document_.get_string().get(text);
      break;
    }
    case ondemand::json_type::number: {
      // Read from its token, which must run to the end of the text.
      std::string_view token;
      valid = !document_.raw_json_token().get(token) && token.data() + token.size() == end_;
      token = TrimTrailingSpace(token);
      double number = 0;
      valid = valid && ReadNumberToken(token, number);
      kind = NumberKind(token);
      break;
    }
    case ondemand::json_type::boolean:
    case ondemand::json_type::null: {
      // Read from its token as well: simdjson's own reading of a top-level
      // literal refuses the spaces that may follow it.
      if (type == ondemand::json_type::boolean) kind = "a boolean";
      std::string_view token;
      valid = !document_.raw_json_token().get(token) && token.data() + token.size() == end_;
      token = TrimTrailingSpace(token);
      valid = valid && (type == ondemand::json_type::null ? token == "null" : token == "true" || token == "false");
      break;
    }
    case ondemand::json_type::object:
      break;
  }
  const bool read_from_token = type == ondemand::json_type::number || type == ondemand::json_type::boolean ||
                               type == ondemand::json_type::null;
  if (!valid || (!read_from_token && !AtEnd())) {
    failure = HaltText(walk.halt == Halt::kTooDeep ? Halt::kTooDeep : Halt::kInvalid);
  } else {
    failure = CannotRead(Join({"the top level is ", kind, ", not an object"}));
  }
  return false;
}

bool Document::AtEnd() { return document_.current_location().error() == simdjson::OUT_OF_BOUNDS; }

}  // namespace json_record_detail
}  // namespace obolo

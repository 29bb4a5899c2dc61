// An address, made only from text that is a well-formed URL.
//
// URL::fromString follows the platform's strict parse: the text must be
// non-empty and made of the characters RFC 3986 allows (ASCII letters, digits,
// "-._~:/?#[]@!$&'()*+,;=" and "%" followed by two hexadecimal digits), with
// at most one "#". A relative reference is a URL too; it has no scheme. So
// "https://obolo.io/terms" and "mailto:support@obolo.io" are URLs, while
// "not a url" (spaces), "" and "50%" are not.

#ifndef OBOLO_TOOLKIT_URL_H_
#define OBOLO_TOOLKIT_URL_H_

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace obolo {

class URL {
 public:
  // The URL of `text`; none when the text is not a well-formed URL.
  static std::optional<URL> fromString(std::string_view text);

  // The text, exactly as given.
  const std::string& absoluteString() const { return text_; }
  // Lower-case scheme ("https", "mailto"); empty for a relative reference.
  std::string scheme() const;
  // The host of an address with an authority ("//host:port"); empty otherwise.
  std::string host() const;
  // The port an address with an authority names ("//host:8443"); none when it
  // names none, or when what follows the host's ":" is not a port number
  // (digits only, at most 65535).
  std::optional<int> port() const;
  // True when a ":" follows the host, whether or not a port number follows it.
  bool hasPortPart() const;

  friend bool operator==(const URL&, const URL&) = default;

 private:
  explicit URL(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

// Writes the URL's absolute string.
std::ostream& operator<<(std::ostream& out, const URL& url);

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_URL_H_

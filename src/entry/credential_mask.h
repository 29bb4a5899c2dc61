// Keeps credentials out of the texts a host's observers receive.
//
// Two texts of an event come from the service: the card's price and a failure
// text. The kit's own failure texts (decoding sentences) name only the kit's
// record members, never a value from the answer; but a logged-in bid that the
// service refuses hands over the service's `message` as it came, and a hostile
// or careless service could echo the reader's token, keys or e-mail in it, or
// in a price. Such a text reaches an observer masked: what is masked is
// replaced by kMaskedCredential.

#ifndef OBOLO_ENTRY_CREDENTIAL_MASK_H_
#define OBOLO_ENTRY_CREDENTIAL_MASK_H_

#include <string>
#include <string_view>
#include <vector>

namespace obolo {

inline constexpr char kMaskedCredential[] = "[hidden]";

// `text` with these masked, in this order:
//   1. every occurrence of a non-empty text of `known` (the stored session's
//      tokens, device key and e-mail);
//   2. anything shaped like a JSON Web Token or a part of one: a run of
//      base64url characters and dots in which "eyJ" (the encoding of `{"`)
//      starts a part, not the middle of a word;
//   3. anything shaped like an e-mail address: local part, "@", and a domain
//      with a dot;
//   4. opaque key-like runs: 16 or more letters, digits, '-' and '_' holding
//      both a letter and a digit (device and login keys, token signatures).
// Words, prices and the kit's decoding sentences pass unchanged.
std::string MaskCredentials(std::string_view text, const std::vector<std::string>& known);

// False when `text` cannot carry a credential worth the name: every word (run
// without white space) is shorter than 8 bytes and none holds an '@'. Tokens,
// the service's keys and e-mail addresses are all longer, or hold the '@';
// a short price like "€0.50" needs no masking and no look at the stored
// session.
bool MayCarryCredential(std::string_view text);

}  // namespace obolo

#endif  // OBOLO_ENTRY_CREDENTIAL_MASK_H_

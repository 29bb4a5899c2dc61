// The kit's one configuration and session record.
//
// Every Obolo construction writes its six texts here, so the most recent
// configuration is in force for every paywall, including those already on
// screen. The reader's session (device key, tokens, e-mail, customer id) is not
// held in memory: each session operation reads or writes the preference store
// at once, so a session survives restarts and a write is seen by the next read.
//
// Thread-safety: the record is used from the main loop, except that a token
// refresh completes on the HTTP session's thread, where it writes the session
// and reads the configuration to send the next bid. Field access is therefore
// synchronised; the store is safe from any thread.

#ifndef OBOLO_ENTRY_GLOBAL_VARIABLE_H_
#define OBOLO_ENTRY_GLOBAL_VARIABLE_H_

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "entry/user_default_key.h"

namespace obolo {

class GlobalVariable {
 public:
  // The one instance, created on first use; lives until the process ends.
  static GlobalVariable& shared();

  GlobalVariable(const GlobalVariable&) = delete;
  GlobalVariable& operator=(const GlobalVariable&) = delete;

  // Configuration, in memory only. All texts start empty, publisherId at 0.
  std::string accessKey() const;
  void setAccessKey(std::string value);
  std::string category() const;
  void setCategory(std::string value);
  std::string articleUrl() const;
  void setArticleUrl(std::string value);
  std::string publisherCustomerId() const;
  void setPublisherCustomerId(std::string value);
  std::string publisherDomain() const;
  void setPublisherDomain(std::string value);
  // Taken from the last bid that configured a card; 0 when that bid had none.
  std::int64_t publisherId() const;
  void setPublisherId(std::int64_t value);
  // The publisher's logo, shown on the card.
  std::string logoUrl() const;
  void setLogoUrl(std::string value);

  // True when an access token is stored and is not the empty text.
  bool isOBTokenExist() const;
  // True when the stored access token expires at least one whole minute from
  // now. Writes the expiry instant, the current instant and the minute count,
  // one line each. Callers ask isOBTokenExist() first.
  bool isOBTokenValid() const;
  // The same rule for the stored refresh token; false at once, silently, when
  // none is stored.
  bool isRefreshTokenValid() const;

  // Stores the access token, then writes the stored token as one line.
  void setAccessToken(std::string_view value);
  // The session's values, each written to the store at once and read from it
  // afresh: the empty text (or 0) when none is stored.
  std::string getAccessToken() const;
  void setRefreshToken(std::string_view value);
  std::string getRefreshToken() const;
  void setDeviceKey(std::string_view value);
  std::string getDeviceKey() const;
  void setEmail(std::string_view value);
  std::string getEmail() const;
  void setCustomerId(std::int64_t value);
  // 0 when none is stored (a stored 0 reads the same).
  std::int64_t getCustomerId() const;

  // Clears the persisted session, removing deviceKey, accessToken,
  // refreshToken, customerId and email in that order, in one write group. The
  // configuration and every other key of the store are left as they are.
  void logout();

  // A write group on the session's store: the session writes this thread
  // makes until it ends reach the disk together, so a crash never keeps a
  // token beside another login's device key, and the disk syncs once. Each
  // write is still read back at once.
  PreferenceWriteGroup sessionWriteGroup() const;

 private:
  GlobalVariable() = default;

  // Each reads its key afresh: the stored value when it has the wanted kind
  // (text), or the store's own reading of it (integer, boolean); "", 0 or
  // false when the key is absent.
  std::string getString(UserDefaultKey key) const;
  std::int64_t getInt(UserDefaultKey key) const;
  bool getBool(UserDefaultKey key) const;

  bool isTokenValid(std::string_view token) const;

  mutable std::mutex mutex_;
  std::string accessKey_;
  std::string category_;
  std::string articleUrl_;
  std::string publisherCustomerId_;
  std::string publisherDomain_;
  std::int64_t publisherId_ = 0;
  std::string logoUrl_;
};

}  // namespace obolo

#endif  // OBOLO_ENTRY_GLOBAL_VARIABLE_H_

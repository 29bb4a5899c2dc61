// The TLS identity of an HTTPS sandbox: a fresh EC P-256 key and a self-signed
// certificate for 127.0.0.1 and localhost, made when the sandbox starts.
//
// The certificate is also written as PEM to a file in a new temporary
// directory, so that a client can trust exactly this certificate (the kit
// reads the file's name from OBOLO_CA_FILE). The directory is removed when
// the object is destroyed.

#ifndef OBOLO_SANDBOX_CERTIFICATE_H_
#define OBOLO_SANDBOX_CERTIFICATE_H_

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <memory>
#include <string>

namespace obolo::sandbox {

class SelfSignedCertificate {
 public:
  // A new key and certificate with its PEM file; nullptr with a reason in
  // `error` when OpenSSL or the file system refuses.
  static std::unique_ptr<SelfSignedCertificate> Create(std::string* error);

  ~SelfSignedCertificate();
  SelfSignedCertificate(const SelfSignedCertificate&) = delete;
  SelfSignedCertificate& operator=(const SelfSignedCertificate&) = delete;

  // Owned by this object; valid for its lifetime. A server that takes them
  // adds references of its own.
  X509* certificate() const { return certificate_; }
  EVP_PKEY* key() const { return key_; }
  // The PEM file holding the certificate.
  const std::string& pemFile() const { return pem_file_; }

 private:
  SelfSignedCertificate() = default;

  EVP_PKEY* key_ = nullptr;
  X509* certificate_ = nullptr;
  std::filesystem::path directory_;
  std::string pem_file_;
};

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_CERTIFICATE_H_

#include "sandbox/certificate.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <stdlib.h>

#include <cstdio>
#include <system_error>

namespace obolo::sandbox {
namespace {

std::string OpenSslError(const char* what) {
  std::string text = what;
  if (unsigned long code = ERR_get_error(); code != 0) {
    char buffer[256];
    ERR_error_string_n(code, buffer, sizeof buffer);
    text += ": ";
    text += buffer;
  }
  ERR_clear_error();
  return text;
}

bool AddExtension(X509* certificate, int nid, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
  if (extension == nullptr) return false;
  const bool added = X509_add_ext(certificate, extension, -1) == 1;
  X509_EXTENSION_free(extension);
  return added;
}

bool FillCertificate(X509* certificate, EVP_PKEY* key) {
  if (X509_set_version(certificate, 2) != 1) return false;  // X.509 v3

  unsigned char serial_bytes[16];
  if (RAND_bytes(serial_bytes, sizeof serial_bytes) != 1) return false;
  serial_bytes[0] &= 0x7F;  // a positive serial number
  BIGNUM* serial = BN_bin2bn(serial_bytes, sizeof serial_bytes, nullptr);
  const bool serial_set = serial != nullptr && BN_to_ASN1_INTEGER(serial, X509_get_serialNumber(certificate));
  BN_free(serial);
  if (!serial_set) return false;

  // Valid from an hour ago, to tolerate a client clock slightly behind.
  if (X509_gmtime_adj(X509_getm_notBefore(certificate), -3600) == nullptr) return false;
  if (X509_gmtime_adj(X509_getm_notAfter(certificate), 30L * 24 * 3600) == nullptr) return false;

  X509_NAME* name = X509_get_subject_name(certificate);
  const auto* common_name = reinterpret_cast<const unsigned char*>("Obolo sandbox");
  const auto* organisation = reinterpret_cast<const unsigned char*>("Obolo sandbox (self-signed)");
  if (X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, common_name, -1, -1, 0) != 1) return false;
  if (X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC, organisation, -1, -1, 0) != 1) return false;
  if (X509_set_issuer_name(certificate, name) != 1) return false;
  if (X509_set_pubkey(certificate, key) != 1) return false;

  // The certificate is its own trust anchor and the server's leaf at once.
  if (!AddExtension(certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0")) return false;
  if (!AddExtension(certificate, NID_key_usage, "critical,digitalSignature,keyCertSign")) return false;
  if (!AddExtension(certificate, NID_ext_key_usage, "serverAuth")) return false;
  if (!AddExtension(certificate, NID_subject_key_identifier, "hash")) return false;
  if (!AddExtension(certificate, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost")) return false;

  return X509_sign(certificate, key, EVP_sha256()) > 0;
}

}  // namespace

std::unique_ptr<SelfSignedCertificate> SelfSignedCertificate::Create(std::string* error) {
  std::unique_ptr<SelfSignedCertificate> result(new SelfSignedCertificate);

  result->key_ = EVP_EC_gen("P-256");
  if (result->key_ == nullptr) {
    if (error) *error = OpenSslError("cannot generate an EC P-256 key");
    return nullptr;
  }
  result->certificate_ = X509_new();
  if (result->certificate_ == nullptr || !FillCertificate(result->certificate_, result->key_)) {
    if (error) *error = OpenSslError("cannot make the self-signed certificate");
    return nullptr;
  }

  std::error_code ec;
  std::string pattern = (std::filesystem::temp_directory_path(ec) / "obolo-sandbox-XXXXXX").string();
  if (ec || mkdtemp(pattern.data()) == nullptr) {
    if (error) *error = "cannot create a temporary directory for the certificate";
    return nullptr;
  }
  result->directory_ = pattern;
  result->pem_file_ = (result->directory_ / "sandbox-ca.pem").string();

  FILE* file = std::fopen(result->pem_file_.c_str(), "w");
  if (file == nullptr) {
    if (error) *error = "cannot write " + result->pem_file_;
    return nullptr;
  }
  const bool written = PEM_write_X509(file, result->certificate_) == 1;
  const bool closed = std::fclose(file) == 0;
  if (!written || !closed) {
    if (error) *error = OpenSslError("cannot write the certificate's PEM file");
    return nullptr;
  }
  return result;
}

SelfSignedCertificate::~SelfSignedCertificate() {
  X509_free(certificate_);
  EVP_PKEY_free(key_);
  if (!directory_.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
}

}  // namespace obolo::sandbox

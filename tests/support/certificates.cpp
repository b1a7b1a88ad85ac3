#include "certificates.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <random>
#include <stdexcept>

namespace quorvel::testing {
namespace {

/// A certificate for `key`, signed by the issuer, or by itself without one; the days count from today.
std::shared_ptr<X509> certify(const std::string& name, EVP_PKEY* key, X509* issuer, EVP_PKEY* issuer_key, int from_day,
                              int to_day, const char* constraints, const std::string& alternative_name) {
  auto certificate = owned(X509_new(), X509_free);
  X509* const made = certificate.get();
  const auto* common_name = reinterpret_cast<const unsigned char*>(name.c_str());
  require(X509_set_version(made, X509_VERSION_3) && X509_set_pubkey(made, key) &&
          ASN1_INTEGER_set_uint64(X509_get_serialNumber(made), std::random_device()()));
  require(X509_NAME_add_entry_by_txt(X509_get_subject_name(made), "CN", MBSTRING_UTF8, common_name, -1, -1, 0));
  require(X509_set_issuer_name(made, X509_get_subject_name(issuer != nullptr ? issuer : made)));
  require(X509_time_adj_ex(X509_getm_notBefore(made), from_day, 0, nullptr) &&
          X509_time_adj_ex(X509_getm_notAfter(made), to_day, 0, nullptr));
  const auto extend = [made](int kind, const char* value) {
    auto extension = owned(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value), X509_EXTENSION_free);
    require(X509_add_ext(made, extension.get(), -1));
  };
  extend(NID_basic_constraints, constraints);
  if (!alternative_name.empty()) extend(NID_subject_alt_name, alternative_name.c_str());
  require(X509_sign(made, issuer_key, EVP_sha256()));
  return certificate;
}

template <class Write, class... Arguments>
std::string written(Write write, Arguments... arguments) {
  auto memory = owned(BIO_new(BIO_s_mem()), BIO_free_all);
  require(write(memory.get(), arguments...));
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &bytes);
  return {bytes, static_cast<std::size_t>(size)};
}

}  // namespace

void require(bool done) {
  if (!done) throw std::runtime_error(std::string("OpenSSL: ") + ERR_error_string(ERR_get_error(), nullptr));
}

TestAuthority::TestAuthority()
    : key_(owned(EVP_EC_gen("P-256"), EVP_PKEY_free)),
      certificate_(certify("Test authority", key_.get(), nullptr, key_.get(), -30, 30, "critical,CA:TRUE", "")) {}

std::string TestAuthority::pem() const {
  return written(PEM_write_bio_X509, certificate_.get());
}

TlsIdentity TestAuthority::issue(const std::string& host, Validity validity) const {
  const int last_day = validity == Validity::Current ? 20 : -1;
  const std::shared_ptr<ASN1_OCTET_STRING> address(a2i_IPADDRESS(host.c_str()), ASN1_OCTET_STRING_free);
  auto key = owned(EVP_EC_gen("P-256"), EVP_PKEY_free);
  auto certificate = certify(host, key.get(), certificate_.get(), key_.get(), -10, last_day, "critical,CA:FALSE",
                             (address ? "IP:" : "DNS:") + host);
  return {written(PEM_write_bio_X509, certificate.get()),
          written(PEM_write_bio_PKCS8PrivateKey, key.get(), nullptr, nullptr, 0, nullptr, nullptr)};
}

}  // namespace quorvel::testing

#pragma once

#include <memory>
#include <string>

// As OpenSSL declares them; a test without TLS needs no more of it.
typedef struct evp_pkey_st EVP_PKEY;
typedef struct ssl_ctx_st SSL_CTX;
typedef struct x509_st X509;

namespace quorvel::testing {

/// Throws std::runtime_error with OpenSSL's own words unless `done`.
void require(bool done);

/// Takes charge of what an OpenSSL call made; throws when the call made nothing.
template <class T>
std::shared_ptr<T> owned(T* handle, void (*free)(T*)) {
  require(handle != nullptr);
  return {handle, free};
}

struct TlsIdentity {
  std::string certificate_pem, key_pem;
  bool gives_notice = true;  // before a connection is closed
};

enum class Validity { Current, Expired };

/// A certificate authority that lives in memory; only who is given its pem() trusts it.
class TestAuthority {
 public:
  TestAuthority();
  std::string pem() const;
  /// A server's certificate for a DNS name or an IP address, with its key.
  TlsIdentity issue(const std::string& host, Validity validity = Validity::Current) const;

 private:
  std::shared_ptr<EVP_PKEY> key_;
  std::shared_ptr<X509> certificate_;
};

}  // namespace quorvel::testing

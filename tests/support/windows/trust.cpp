#include "trust.h"

#include <windows.h>

#include <wincrypt.h>

#include <stdexcept>
#include <vector>

#include "file_tools.h"
#include "platform/windows/wide.h"

namespace quorvel::testing {
namespace {

[[noreturn]] void fail(const char* what) {
  throw std::runtime_error(std::string(what) + ": " + error_text(GetLastError()));
}

/// The certificate as the user's store of trusted roots holds it from now on.
const CERT_CONTEXT* stored(const std::string& pem) {
  DWORD size = 0;
  CryptStringToBinaryA(pem.c_str(), 0, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr);
  std::vector<BYTE> bytes(size);
  if (size == 0 ||
      !CryptStringToBinaryA(pem.c_str(), 0, CRYPT_STRING_BASE64HEADER, bytes.data(), &size, nullptr, nullptr)) {
    fail("no certificate");
  }
  const HCERTSTORE roots = CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
  const CERT_CONTEXT* added = nullptr;
  const bool done = roots != nullptr && CertAddEncodedCertificateToStore(roots, X509_ASN_ENCODING, bytes.data(), size,
                                                                         CERT_STORE_ADD_REPLACE_EXISTING, &added);
  if (!done) fail("the authority cannot be trusted");
  CertCloseStore(roots, 0);
  return added;
}

}  // namespace

struct Trust::System {
  const CERT_CONTEXT* certificate;
  ~System() { CertDeleteCertificateFromStore(certificate); }
};

Trust::Trust(const std::string& file) : system_(new System{stored(contents(file))}) {}

Trust::~Trust() = default;

}  // namespace quorvel::testing

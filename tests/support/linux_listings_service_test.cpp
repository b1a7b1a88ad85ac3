#include "listings_service.h"

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <future>

namespace quorvel::testing {
namespace {

using Stream = std::shared_ptr<BIO>;
constexpr std::chrono::hours kForever(24);

std::string read(const Stream& stream, std::size_t most = std::string::npos) {
  std::string all;
  for (char byte = 0; all.size() < most && BIO_read(stream.get(), &byte, 1) == 1;) all += byte;
  return all;
}

/// A plain connection that has sent `bytes`.
Stream sent(const ListingsService& service, const std::string& bytes) {
  auto stream = owned(BIO_new_connect(("127.0.0.1:" + std::to_string(service.port())).c_str()), BIO_free_all);
  require(BIO_do_connect(stream.get()) == 1 && BIO_puts(stream.get(), bytes.c_str()) > 0);
  return stream;
}

std::string get(const ListingsService& service, const std::string& target) {
  return read(sent(service, "GET " + target + " HTTP/1.0\r\n\r\n"));
}

std::string ok(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TEST(ListingsService, RecordsEveryByteOfARequestAndAnswersFromItsFilesOnly) {
  const ListingsService service;
  const std::string request = "GET /search/shows?q=caf%E9+noir HTTP/1.0\r\nCookie:  \xE9\t\r\nx\n\n\r\r\n\r\n";
  EXPECT_NE(read(sent(service, request)).find(R"("name":"Café Noir")"), std::string::npos);
  EXPECT_EQ(service.requests(), std::vector{request});
  for (const char* target : {"/search/shows?q=nobody", "/search/shows?q=../episodes/101", "/shows/108/episodes"}) {
    EXPECT_EQ(get(service, target), ok("[]")) << target;
  }
  for (const char* target : {"/shows/999/episodes", "/shows/../search/empty+shelf/episodes", "/shows/episodes", "/"}) {
    EXPECT_TRUE(get(service, target).starts_with("HTTP/1.1 404 Not Found\r\n")) << target;
  }
}

TEST(ListingsService, MisbehavesAsTheScriptSays) {
  ListingsService service;
  const std::string target = "/shows/105/episodes", good = get(service, target);
  const std::size_t body = good.find("\r\n\r\n") + 4;
  const auto misbehaved = [&](const Script& script) { return service.misbehave(script), get(service, target); };
  EXPECT_EQ(misbehaved(scripts::status(401)), "HTTP/1.1 401 As Told" + good.substr(15));
  EXPECT_EQ(misbehaved(scripts::truncated(7)), good.substr(0, body + 7));
  EXPECT_EQ(misbehaved(scripts::no_blank_line()), good.substr(0, body - 2));
  EXPECT_EQ(misbehaved(scripts::body({'\0', '\xFF', '\r'})), ok({'\0', '\xFF', '\r'}));
  EXPECT_EQ(misbehaved(scripts::slow(std::chrono::milliseconds(0))), good);
  EXPECT_EQ(scripts::slow(kForever)("", good).back().pause, kForever);
  EXPECT_EQ(misbehaved(scripts::split_at(body - 2)), good);
  EXPECT_EQ(scripts::split_at(body - 2)("", good).front().bytes, good.substr(0, body - 2));
  EXPECT_EQ(misbehaved(scripts::redirect_to("/x", 303)), "HTTP/1.1 303 Moved\r\nLocation: /x\r\n\r\n");
  EXPECT_EQ(get(service, target), good);
}

// Each wait here ends only because the service notices that the client, or the test, has gone.
TEST(ListingsService, NeitherAHangingNorAVanishedClientHoldsItUp) {
  Stream pausing, full;
  std::promise<void> asked, gone;
  auto service = std::make_unique<ListingsService>();
  service->misbehave([&](auto&, auto&) {
    asked.set_value();
    gone.get_future().wait();
    return std::vector<Piece>{{"a"}, {"b"}, {"c"}};
  });
  Stream leaving = sent(*service, "\r\n\r\n");
  asked.get_future().wait();
  leaving.reset();
  gone.set_value();
  service->misbehave([](auto&, auto&) { return std::vector<Piece>{{"first"}, {"second", kForever}}; });
  EXPECT_EQ(read(sent(*service, "\r\n\r\n"), 5), "first");
  EXPECT_EQ(read(pausing = sent(*service, "\r\n\r\n"), 5), "first");
  service = std::make_unique<ListingsService>();
  service->misbehave(scripts::body(std::string(64 << 20, 'x')));
  EXPECT_EQ(read(full = sent(*service, "\r\n\r\n"), 4), "HTTP");
}

/// What a client that trusts only the authority finds when it checks the service's certificate.
long verified(const TestAuthority& trusted, const TlsIdentity& identity, const char* host = "localhost") {
  const ListingsService service(identity);
  const auto text = owned(BIO_new(BIO_s_mem()), BIO_free_all);
  BIO_puts(text.get(), trusted.pem().c_str());
  const auto authority = owned(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), X509_free);
  const auto context = owned(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
  X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), authority.get());
  SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
  const auto stream = owned(BIO_new_ssl_connect(context.get()), BIO_free_all);
  SSL* tls = nullptr;
  BIO_get_ssl(stream.get(), &tls);
  SSL_set1_host(tls, host);
  BIO_set_conn_hostname(stream.get(), service.base().c_str() + std::string("https://").size());
  const bool answered = BIO_puts(stream.get(), "GET /shows/108/episodes HTTP/1.0\r\n\r\n") > 0;
  EXPECT_EQ(read(stream), answered ? ok("[]") : "");
  EXPECT_EQ(answered, SSL_get_shutdown(tls) == SSL_RECEIVED_SHUTDOWN) << "no clean end";
  return answered ? X509_V_OK : SSL_get_verify_result(tls);
}

TEST(ListingsService, OnlyTheRightCertificatePassesForItsHost) {
  const TestAuthority authority, stranger;
  EXPECT_EQ(verified(authority, authority.issue("localhost")), X509_V_OK);
  EXPECT_EQ(verified(authority, authority.issue("127.0.0.1"), "127.0.0.1"), X509_V_OK);
  EXPECT_EQ(verified(authority, authority.issue("other.example")), X509_V_ERR_HOSTNAME_MISMATCH);
  EXPECT_EQ(verified(authority, authority.issue("localhost", Validity::Expired)), X509_V_ERR_CERT_HAS_EXPIRED);
  EXPECT_EQ(verified(authority, stranger.issue("localhost")), X509_V_ERR_CERT_SIGNATURE_FAILURE);
}

}  // namespace
}  // namespace quorvel::testing

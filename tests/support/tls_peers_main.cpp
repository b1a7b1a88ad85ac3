#include <openssl/ssl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "fake_listings.h"

namespace {

/// Refuses a client that offers HTTP/2: a service that has it would then speak it.
int refuse_http2(SSL*, const unsigned char**, unsigned char*, const unsigned char* offered, unsigned size, void*) {
  const std::string_view protocols(reinterpret_cast<const char*>(offered), size);
  return protocols.find("h2") == std::string_view::npos ? SSL_TLSEXT_ERR_NOACK : SSL_TLSEXT_ERR_ALERT_FATAL;
}

/// A listening socket whose clients are spoken to with this certificate.
BIO* new_server(const std::string& certificate, bool gives_notice, bool is_modern) {
  const std::string file = QUORVEL_CERTIFICATES_DIR "/" + certificate + ".pem";
  SSL_CTX* const context = SSL_CTX_new(TLS_server_method());
  BIO* const server = BIO_new_accept("127.0.0.1:0");
  if (!is_modern) SSL_CTX_set_alpn_select_cb(context, refuse_http2, nullptr);
  SSL_CTX_set_quiet_shutdown(context, gives_notice ? 0 : 1);
  if (SSL_CTX_use_certificate_file(context, file.c_str(), SSL_FILETYPE_PEM) != 1 ||
      SSL_CTX_use_PrivateKey_file(context, file.c_str(), SSL_FILETYPE_PEM) != 1 ||
      BIO_set_accept_bios(server, BIO_new_ssl(context, 0)) != 1 ||
      BIO_do_accept(server) != 1) {  // the first only takes a port
    throw std::runtime_error("no TLS server with " + file);
  }
  return server;
}

void serve(BIO* server) {
  while (BIO_do_accept(server) == 1) {
    BIO* const client = BIO_pop(server);
    std::string request;
    for (char byte = 0; !request.ends_with("\r\n\r\n") && BIO_read(client, &byte, 1) == 1;) request += byte;
    // Whoever refuses the certificate asks nothing.
    const std::string leave = "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: http://127.0.0.1:1/\r\n\r\n";
    const std::string answer = request.empty()                      ? ""
                               : request.starts_with("GET /leave ") ? leave
                                                                    : quorvel::testing::listings_answer(request);
    BIO_write(client, answer.data(), static_cast<int>(answer.size()));
    BIO_free_all(client);  // with the notice that TLS wants
  }
}

}  // namespace

/// tls-peers COMMAND [ARGUMENT...] runs a test with TLS servers of every kind beside it, whose ports it finds in its
/// environment, and exits with its status. They are programs of this system even where the test is one of another.
int main(int, char** argv) {
  std::vector<BIO*> servers;
  for (const std::string name : {"good", "other_host", "expired", "stranger", "silent", "modern"}) {
    const bool is_good = name == "silent" || name == "modern";
    servers.push_back(new_server(is_good ? "good" : name, name != "silent", name == "modern"));
    setenv(("QUORVEL_TLS_" + name).c_str(), BIO_get_accept_port(servers.back()), 1);
  }
  const pid_t child = fork();
  if (child == 0) return execvp(argv[1], argv + 1);
  (void)signal(SIGPIPE, SIG_IGN);  // a client that refuses a certificate hangs up early
  for (BIO* const server : servers) std::thread(serve, server).detach();
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iostream>

#include "listings_service.h"

using namespace quorvel::testing;

static Script script_of(const std::string& kind) {
  const std::size_t cut = std::min(kind.find('='), kind.size());
  const std::string name = kind.substr(0, cut), argument = kind.substr(std::min(cut + 1, kind.size()));
  if (kind == "no-blank-line") return scripts::no_blank_line();
  if (name == "redirect" && !argument.empty()) return scripts::redirect_to(argument);
  int number = 0;
  const auto [end, error] = std::from_chars(argument.data(), argument.data() + argument.size(), number);
  if (error == std::errc() && *end == '\0' && number >= 0) {
    if (name == "status") return scripts::status(number);
    if (name == "split") return scripts::split_at(number);
    if (name == "truncated") return scripts::truncated(number);
    if (name == "slow") return scripts::slow(std::chrono::milliseconds(number));
  }
  throw CLI::ValidationError("--misbehave", "no such kind: \"" + kind + "\"");
}

int main(int argc, char** argv) try {
  struct sigaction end = {};
  end.sa_handler = [](int) { _exit(0); };
  if (sigaction(SIGINT, &end, nullptr) != 0 || sigaction(SIGTERM, &end, nullptr) != 0) return 1;
  CLI::App app("A listings service on loopback for tests and trials.");
  std::uint16_t port = 0;
  std::string shows, tls_dir, kind;
  bool until_eof = false;
  app.add_option("--port", port, "a free one without it");
  app.add_option("--shows", shows, "folder of the answers");
  app.add_option("--tls-dir", tls_dir, "serve TLS for localhost and write the authority there, as ca.pem");
  app.add_option("--misbehave", kind, "status=CODE, split|truncated=BYTES, slow=MS, no-blank-line or redirect=ADDRESS");
  app.add_flag("--until-eof", until_eof, "end with standard input too");
  Script script;
  try {
    app.parse(argc, argv);
    if (app.count("--misbehave") > 0) script = script_of(kind);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  std::optional<TlsIdentity> identity;
  if (!tls_dir.empty()) {
    const TestAuthority authority;
    identity = authority.issue("localhost");
    std::filesystem::create_directories(tls_dir);
    std::ofstream file(tls_dir + "/ca.pem");
    if (!(file << authority.pem() << std::flush)) throw std::runtime_error("cannot write to " + tls_dir);
  }
  ListingsService service(identity, port, shows);
  service.misbehave(script);
  std::cout << service.base() << std::endl;
  if (until_eof) return std::cin.ignore(std::numeric_limits<std::streamsize>::max()), 0;
  for (;;) pause();
} catch (const std::exception& error) {
  std::cerr << "listings-stand-in: " << error.what() << '\n';
  return 1;
}

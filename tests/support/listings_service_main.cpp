#include <getopt.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>

#include "listings_service.h"

using namespace quorvel::testing;

namespace {

constexpr const char* usage =
    "Usage: listings-stand-in [--port N] [--shows DIR] [--tls-dir DIR] [--misbehave KIND] [--until-eof]\n"
    "A listings service on loopback for tests and trials; it prints its address. With --tls-dir it serves TLS for\n"
    "localhost and writes the authority there, as ca.pem. --until-eof ends it with standard input. KIND is one of\n"
    "status=CODE, split=BYTES, truncated=BYTES, slow=MILLISECONDS, no-blank-line, redirect=ADDRESS.\n";

struct WrongUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::size_t number_of(const std::string& text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) throw WrongUsage("no number: \"" + text + "\"");
  return number;
}

Script script_of(const std::string& kind) {
  const std::size_t cut = std::min(kind.find('='), kind.size());
  const std::string name = kind.substr(0, cut), argument = kind.substr(std::min(cut + 1, kind.size()));
  if (kind.empty()) return {};
  if (kind == "no-blank-line") return scripts::no_blank_line();
  if (name == "redirect" && !argument.empty()) return scripts::redirect_to(argument);
  if (name == "status") return scripts::status(static_cast<int>(number_of(argument)));
  if (name == "split") return scripts::split_at(number_of(argument));
  if (name == "truncated") return scripts::truncated(number_of(argument));
  if (name == "slow") return scripts::slow(std::chrono::milliseconds(number_of(argument)));
  throw WrongUsage("no such kind: \"" + kind + "\"");
}

std::map<std::string, std::string> options_of(int argc, char** argv) {
  constexpr std::array<option, 6> known = {{{"port", required_argument, nullptr, 0},
                                            {"shows", required_argument, nullptr, 0},
                                            {"tls-dir", required_argument, nullptr, 0},
                                            {"misbehave", required_argument, nullptr, 0},
                                            {"until-eof", no_argument, nullptr, 0},
                                            {nullptr, 0, nullptr, 0}}};
  std::map<std::string, std::string> options;
  int index = 0;
  for (int found; (found = getopt_long(argc, argv, "", known.data(), &index)) != -1;) {
    if (found == '?') throw WrongUsage("see above");
    options[known.at(index).name] = optarg == nullptr ? "yes" : optarg;
  }
  if (optind != argc) throw WrongUsage("what is \"" + std::string(argv[optind]) + "\"?");
  return options;
}

TlsIdentity identity_in(const std::string& folder) {
  const TestAuthority authority;
  std::filesystem::create_directories(folder);
  std::ofstream file(folder + "/ca.pem");
  if (!(file << authority.pem() << std::flush)) throw std::runtime_error("cannot write to " + folder);
  return authority.issue("localhost");
}

int run(std::map<std::string, std::string> options) {
  const Script script = script_of(options["misbehave"]);
  const std::size_t port = number_of(options["port"].empty() ? "0" : options["port"]);
  if (port > std::numeric_limits<std::uint16_t>::max()) throw WrongUsage("no port: " + options["port"]);
  std::optional<TlsIdentity> identity;
  if (!options["tls-dir"].empty()) identity = identity_in(options["tls-dir"]);
  ListingsService service(identity, static_cast<std::uint16_t>(port), options["shows"]);
  service.misbehave(script);
  std::cout << service.base() << std::endl;
  if (!options["until-eof"].empty()) return std::cin.ignore(std::numeric_limits<std::streamsize>::max()), 0;
  for (;;) pause();
}

}  // namespace

int main(int argc, char** argv) try {
  struct sigaction end = {};
  end.sa_handler = [](int) { _exit(0); };
  if (sigaction(SIGINT, &end, nullptr) != 0 || sigaction(SIGTERM, &end, nullptr) != 0) return 1;
  return run(options_of(argc, argv));
} catch (const WrongUsage& error) {
  std::cerr << "listings-stand-in: " << error.what() << '\n' << usage;
  return 2;
} catch (const std::exception& error) {
  std::cerr << "listings-stand-in: " << error.what() << '\n';
  return 1;
}

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <list>

#include "file_tools.h"
#include "listings_service.h"
#include "temporary_folder.h"

/// tls-peers COMMAND [ARGUMENT...] runs a test with TLS servers of every kind beside it, whose addresses it finds in
/// its environment, and answers its status. They are programs of this system even where the test is one of another.
int main(int argc, char** argv) try {
  using namespace quorvel::testing;
  if (argc < 2) throw std::runtime_error("no command is given");
  const TestAuthority authority, stranger;
  TlsIdentity silent = authority.issue("localhost");
  silent.gives_notice = false;
  const TemporaryFolder folder;
  write_file(folder / "authority.pem", authority.pem());
  setenv("QUORVEL_TLS_AUTHORITY", (folder / "authority.pem").c_str(), 1);
  std::list<ListingsService> services;
  for (const auto& [name, identity] : {std::pair("GOOD", authority.issue("localhost")),
                                       {"OTHER_HOST", authority.issue("example.org")},
                                       {"EXPIRED", authority.issue("localhost", Validity::Expired)},
                                       {"STRANGER", stranger.issue("localhost")},
                                       {"SILENT", silent}}) {
    setenv((std::string("QUORVEL_TLS_") + name).c_str(), services.emplace_back(identity).base().c_str(), 1);
  }
  const pid_t child = fork();
  if (child == 0) {
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
} catch (const std::exception& error) {
  std::cerr << "tls-peers: " << error.what() << '\n';
  return 1;
}

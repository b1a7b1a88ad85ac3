#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "../support/temporary_folder.h"
#include "platform/linux/gio_launcher.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

/// What the program started with `folder` as the user's home answers; GLib reads the environment only once.
bool opened(const std::string& folder, const std::string& target) {
  const pid_t child = fork();
  if (child == 0) {
    for (const char* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_DATA_DIRS"})
      setenv(name, folder.c_str(), 1);
    setenv("QUORVEL_TEST_TARGET", target.c_str(), 1);
    execl("/proc/self/exe", "launcher", "--gtest_brief=1", "--gtest_filter=Launcher.Opens*", nullptr);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WEXITSTATUS(status) == 7;
}

std::string recorded(const std::string& path) {
  std::string text;
  while (!text.ends_with('\n')) text = (std::ostringstream() << std::ifstream(path).rdbuf()).str();
  fs::remove(path);
  return text;
}

TEST(Launcher, OpensAddressesAndDocumentsAndRunsNothing) {
  if (const char* const target = std::getenv("QUORVEL_TEST_TARGET")) _exit(GioLauncher().open(target) ? 7 : 8);
  const TemporaryFolder folder;
  const std::string recorder = folder / "recorder", out = folder / "out", page = folder / "help page.html";
  std::ofstream(recorder) << "#!/bin/sh\necho \"$#\" \"$1\" >" << out << ".new\nmv " << out << ".new " << out << "\n";
  fs::permissions(recorder, fs::perms::owner_all);
  fs::create_directory(folder / "applications");
  std::ofstream(folder / "applications/r.desktop")
      << "[Desktop Entry]\nType=Application\nName=r\nExec=" << recorder << " %u\n";
  std::ofstream list(folder / "mimeapps.list");
  list << "[Default Applications]\n";
  for (const char* const type : {"x-scheme-handler/http", "x-scheme-handler/https", "x-scheme-handler/file",
                                 "x-scheme-handler/smb", "x-scheme-handler/javascript", "text/html"}) {
    list << type << "=r.desktop\n";
  }
  list.close();
  std::ofstream(page) << "\x01\x02";
  for (const char* const name : {"program", "a.desktop"}) std::ofstream(folder / name) << "\x01\x02";
  fs::permissions(folder / "program", fs::perms::owner_all);

  const std::string address = "https://127.0.0.1/a?b=$(x)&c='d'";
  EXPECT_TRUE(opened(folder.path(), "\"" + address + "\""));
  EXPECT_EQ(recorded(out), "1 " + address + "\n");
  EXPECT_TRUE(opened(folder.path(), "HTTP://127.0.0.1/"));
  EXPECT_EQ(recorded(out), "1 HTTP://127.0.0.1/\n");
  EXPECT_TRUE(opened(folder.path(), page));
  EXPECT_EQ(recorded(out), "1 " + page + "\n");
  for (const std::string& refused :
       {"file://" + page, std::string("javascript:1"), std::string("smb://127.0.0.1/x"), std::string("help page.html"),
        std::string("http:///x"), std::string("https://"), std::string("http://a\nb"), std::string("\"\""),
        std::string(), "\"\"" + address + "\"\"", folder / "none", folder / "program", folder / "a.desktop",
        folder / "out/x"}) {
    EXPECT_FALSE(opened(folder.path(), refused)) << refused;
  }
  EXPECT_FALSE(fs::exists(out) || fs::exists(out + ".new"));

  EXPECT_TRUE(GioLauncher().start(recorder, "package=Q,x=\"1 2\" $(y)"));
  EXPECT_EQ(recorded(out), "1 package=Q,x=\"1 2\" $(y)\n");
  for (const std::string& program :
       {std::string("recorder"), std::string("true"), std::string(), page, folder / "none"}) {
    EXPECT_FALSE(GioLauncher().start(program, "x")) << program;
  }
}

}  // namespace
}  // namespace quorvel::testing

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

void write(const std::string& path, const std::string& text) {
  fs::create_directories(fs::path(path).parent_path());
  write_file(path, text);
}

/// One menu entry, as a program started for it makes it: installed or removed.
void change(const std::string& data, const std::string& program, const std::string& extension, bool add = true) {
  const Variable home("XDG_DATA_HOME", data);
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<ContextMenu> menu = system_context_menu(*files, program);
  add ? menu->install(extension) : menu->remove(extension);
}

class ProgramPath : public ::testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(DesktopEntries, ProgramPath,
                         ::testing::Values("plain", "it's \"my\" $HOME `x`\\n ü", "100%f a=b `\"\\"));

TEST_P(ProgramPath, IsStartedByValidEntriesThatGoWithoutATrace) {
  const TemporaryFolder folder;
  const std::string program = folder / GetParam() + "/quorvel";
  write(program, "#!/bin/sh\nfor a; do printf '%s|' \"$a\"; done >'" + (folder / "out") + "'\n");
  fs::permissions(program, fs::perms::owner_all);
  const std::string data = folder / "new/data", entry = data + "/applications/quorvel-open.desktop",
                    menu = data + "/kio/servicemenus/quorvel.desktop", script = data + "/nautilus/scripts/Quorvel";
  for (const char* const extension : {"MKV", "avi", "no such type;\n", "DIR", "avi"}) {
    change(data, program, extension);
  }
  EXPECT_EQ(std::system(("desktop-file-validate '" + entry + "'").c_str()), 0);
  for (const char* const type : {"video/x-matroska;", "video/x-msvideo;", "inode/directory;", "video/webm;"}) {
    EXPECT_NE(contents(menu).find(type), std::string::npos) << type;
  }
  EXPECT_EQ(contents(menu).find("octet-stream"), std::string::npos);
  EXPECT_EQ(contents(entry).find("MimeType"), std::string::npos);  // or a double click might rename
  EXPECT_EQ(fs::status(menu).permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
  const std::string out = folder / "out", a = folder / "a b.mkv", c = folder / "c.mkv";
  write(a, "x");
  write(c, "x");
  for (const std::string& command :
       {"gio launch '" + entry + "' '" + a + "' '" + c + "'", "'" + script + "' '" + a + "' '" + c + "'"}) {
    fs::remove(out);
    ASSERT_EQ(std::system(command.c_str()), 0);
    while (!contents(out).ends_with("c.mkv|")) std::this_thread::yield();  // the started program is not waited for
    EXPECT_EQ(contents(out), a + "|" + c + "|");
  }
  const std::string moved = folder / "moved away";
  change(data, moved, "mp4");
  for (const char* const extension : {"mkv", "no such type;\n", "DIR"}) change(data, program, extension, false);
  EXPECT_NE(contents(menu).find("MimeType=video/x-msvideo;\n"), std::string::npos);
  change(data, moved, "avi", false);
  EXPECT_FALSE(fs::exists(folder / "new"));
}

TEST(DesktopEntries, LeaveFilesOfOthersAndEditedOnesAlone) {
  const TemporaryFolder folder;
  const std::string program = folder / "quorvel", entry = folder / "applications/quorvel-open.desktop",
                    menu = folder / "kio/servicemenus/quorvel.desktop", script = folder / "nautilus/scripts/Quorvel";
  write(program, "");
  write(entry, "[Desktop Entry]\n");
  write(folder / "mine", "");
  fs::create_directories(fs::path(script).parent_path());
  fs::create_symlink(folder / "mine", script);
  change(folder.path(), program, "avi");
  const std::string ours = contents(menu);
  for (const std::string& edited :
       {ours + "\n", ours.substr(1), "#\n" + ours, std::string(ours).replace(ours.find("Name"), 1, "n")}) {
    write(menu, edited);
    change(folder.path(), program, "mkv");
    change(folder.path(), program, "avi", false);
    EXPECT_EQ(contents(menu), edited);
  }
  write(menu, ours);
  change(folder.path(), program, "avi", false);
  EXPECT_FALSE(fs::exists(folder / "kio"));
  EXPECT_EQ(contents(entry), "[Desktop Entry]\n");
  EXPECT_TRUE(fs::is_symlink(script) && contents(folder / "mine").empty());
}

/// In a process of its own, for GLib looks at the environment only once.
const SecondProcess install_entry("install entry", [](const std::string& folder) {
  change(folder + "/data", folder + "/quorvel", "avi");
  return 0;
});

TEST(DesktopEntries, AreNotSeenAmongTheProgramsBesideAnInstalledOne) {
  const TemporaryFolder folder;
  write(folder / "quorvel", "");
  const std::string installed = contents(QUORVEL_DESKTOP_ENTRY);
  EXPECT_EQ(installed.find("MimeType"), std::string::npos);
  write(folder / "system/applications/quorvel.desktop", installed);
  Start start = install_entry.start(folder.path());
  start.environment = {{"XDG_DATA_DIRS", folder / "system"}};
  EXPECT_EQ(ChildProcess(start).status(), 0);
  EXPECT_NE(contents(folder / "data/applications/quorvel-open.desktop").find("NoDisplay=true"), std::string::npos);
}

const SecondProcess open_target("open",
                                [](const std::string& target) { return system_launcher()->open(target) ? 0 : 1; });

TEST(Launcher, OpensAddressesAndDocumentsInTheDesktopsChoice) {
  const TemporaryFolder folder;
  const std::string recorder = folder / "recorder", out = folder / "out", page = folder / "help page.html";
  write(recorder, "#!/bin/sh\necho \"$#\" \"$1\" >" + out + ".new\nmv " + out + ".new " + out + "\n");
  fs::permissions(recorder, fs::perms::owner_all);
  write(folder / "applications/r.desktop", "[Desktop Entry]\nType=Application\nName=r\nExec=" + recorder + " %u\n");
  write(folder / "mimeapps.list",
        "[Default Applications]\nx-scheme-handler/http=r.desktop\nx-scheme-handler/https=r.desktop\n"
        "x-scheme-handler/file=r.desktop\nx-scheme-handler/javascript=r.desktop\n"
        "text/html=r.desktop\ntext/plain=r.desktop\napplication/x-shellscript=r.desktop\n"
        "application/x-desktop=r.desktop\n");
  write(page, "x");
  const std::string address = "https://127.0.0.1/a?b=$(x)&c='d'";
  const auto opened = [&](const std::string& target) {
    Start start = open_target.start(target);
    for (const char* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_DATA_DIRS"}) {
      start.environment[name] = folder.path();
    }
    return ChildProcess(start).status() == 0;
  };
  for (const auto& [target, shown] :
       {std::pair("\"" + address + "\"", address), {"HTTP://127.0.0.1/", "HTTP://127.0.0.1/"}, {page, page}}) {
    EXPECT_TRUE(opened(target)) << target;
    while (!fs::exists(out)) std::this_thread::yield();
    EXPECT_EQ(contents(out), "1 " + shown + "\n");
    fs::remove(out);
  }
  // With something to open them.
  for (const std::string& refused :
       {"file://" + page, std::string("javascript:1"), std::string("https://"), std::string("http:///x"),
        std::string("http://a\nb"), "\"\"" + address + "\"\"", recorder, folder / "applications/r.desktop"}) {
    EXPECT_FALSE(opened(refused)) << refused;
  }
}

}  // namespace
}  // namespace quorvel::testing

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "platform/commands.h"
#include "platform/disk_files.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf, ::testing::HasSubstr, ::testing::Not, ::testing::ThrowsMessage;

struct LinuxDesktop : ::testing::Test {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();

  static void write(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    write_file(path, text);
  }
  /// A program that writes its arguments to "out".
  void write_program(const std::string& path) const {
    write(path, "#!/bin/sh\nfor a; do printf '%s|' \"$a\"; done >'" + (folder / "out") + "'\n");
    fs::permissions(path, fs::perms::owner_all);
  }
  /// What that has written, up to this end; it is not waited for by those who start it.
  std::string written(const std::string& end) const {
    while (!contents(folder / "out").ends_with(end)) std::this_thread::yield();
    return contents(folder / "out");
  }
};

TEST_F(LinuxDesktop, FoldersAndClockFollowTheEnvironment) {
  const Variable home("HOME", folder.path());
  const std::string config = folder / "c/", data = folder / "d/e//";
  for (const auto& [config_home, data_home, settings, data_folder] :
       {std::tuple<std::string, std::string, const char*, const char*>(config, data, "c/Q/settings.ini", "d/e"),
        {"relative", "", ".config/Q/settings.ini", ".local/share"}}) {
    const Variable one("XDG_CONFIG_HOME", config_home), other("XDG_DATA_HOME", data_home);
    EXPECT_EQ(application_data_folder(*files), folder / data_folder);
    EXPECT_TRUE(fs::is_directory(folder / data_folder) && !fs::exists(folder / settings));
    system_key_values(*files, "Q")->write_number("x", 1);
    EXPECT_TRUE(fs::exists(folder / settings));
  }
  for (const char* const none : {"", "relative"}) {
    const Variable no_home("HOME", none);
    EXPECT_EQ(native::home_folder(), getpwuid(geteuid())->pw_dir) << none;
  }
  const auto day_in = [](const char* zone) {
    const Variable time_zone("TZ", zone);
    return std::chrono::sys_days(system_clock()->today());
  };
  EXPECT_GE(day_in("EAST-14"), day_in("WEST+12") + std::chrono::days(1));
}

TEST_F(LinuxDesktop, TheSettingsFileKeepsWhatElseStandsInItAndStaysWhenItCannotBeUnderstood) {
  const std::string path = data_folder_of(folder.path()) + "/settings.ini";
  const std::string foreign =
      "# mine\n\n[Other]\nkey[de]=wert\n\n[Settings]\n# why\nlow=-1\nbig=4294967296\nword=12 x\nraw=\xff\n";
  write(path, foreign);
  const fs::path left = path_of(data_folder_of(folder.path())) / ".quorvel-killed", current = left.string() + "2";
  for (const fs::path& temporary : {left, current}) write(temporary.string(), "half");
  fs::last_write_time(left, fs::last_write_time(left) - std::chrono::hours(25));
  const auto store = settings_of(*files, folder.path());
  store->write_string("", "3.4");
  for (const char* const name : {"a=b", "a\nb", "[x]", "#x"}) EXPECT_THROW(store->write_number(name, 1), Failure);
  EXPECT_THROW(store->write_string("types", "\xff"), Failure);
  EXPECT_EQ(contents(path), foreign + "version=3.4\n");
  EXPECT_TRUE(!fs::exists(left) && fs::exists(current));
  EXPECT_EQ(store->read_number("low"), 0xFFFFFFFFu);
  EXPECT_FALSE(store->read_number("big") || store->read_number("word") || store->read_string("raw"));

  const std::string damaged("[Settings]\nlow=1\0\n", 18);
  write(path, damaged);
  const auto none = settings_of(*files, folder.path());
  EXPECT_TRUE(none->trouble() && !none->read_number("low"));
  EXPECT_THAT([&] { none->write_number("low", 2); }, ThrowsMessage<Failure>(AllOf(HasSubstr(path), HasSubstr("NUL"))));
  EXPECT_EQ(contents(path), damaged);
}

/// One menu entry, as a program started for it makes it: installed or removed.
void change(const std::string& data, const std::string& program, const std::string& extension, bool add = true) {
  const Variable home("XDG_DATA_HOME", data);
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<ContextMenu> menu = system_context_menu(*files, program);
  add ? menu->install(extension) : menu->remove(extension);
}

TEST_F(LinuxDesktop, EntriesAreValidStartTheProgramAndGoWithoutATrace) {
  const std::string program = folder / "it's \"my\" $HOME `x`\\n 100%f a=b ü/quorvel", data = folder / "kept/new/data",
                    entry = data + "/applications/quorvel-open.desktop",
                    menu = data + "/kio/servicemenus/quorvel.desktop", script = data + "/nautilus/scripts/Quorvel";
  write_program(program);
  fs::create_directory(folder / "kept");
  for (const char* const extension : {"MKV", "avi", "no such type;\n", "DIR", "avi"}) change(data, program, extension);
  EXPECT_EQ(std::system(("desktop-file-validate '" + entry + "'").c_str()), 0);
  EXPECT_THAT(contents(menu), AllOf(HasSubstr("video/x-msvideo;"), HasSubstr("directory;"), HasSubstr("video/webm;")));
  EXPECT_THAT(contents(menu),
              AllOf(HasSubstr("\n[Desktop Entry]\nType=Service\nX-KDE-ServiceTypes=KonqPopupMenu/Plugin\n"),
                    HasSubstr("\nActions=quorvel;\n"),
                    HasSubstr("\n[Desktop Action quorvel]\nName=Quorvel\nIcon=quorvel\nExec=")));
  EXPECT_THAT(contents(entry), HasSubstr("\n[Desktop Entry]\nType=Application\nName=Quorvel\nComment=Rename television "
                                         "episode files\nIcon=quorvel\nExec="));
  EXPECT_THAT(contents(entry), Not(HasSubstr("MimeType")));  // or a double click might rename
  EXPECT_EQ(fs::status(menu).permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
  const std::string a = folder / "a b.mkv", c = folder / "c.mkv", both = "' '" + a + "' '" + c + "'";
  for (const std::string& command : {"gio launch '" + entry + both, "'" + script + both}) {
    fs::remove(folder / "out");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(written("c.mkv|"), a + "|" + c + "|");
  }
  for (const char* const extension : {"mkv", "no such type;\n", "DIR", "avi"}) change(data, program, extension, false);
  EXPECT_TRUE(fs::exists(folder / "kept") && !fs::exists(folder / "kept/new"));
  struct : DiskFiles {
    bool replace(const std::string&, const std::string&) override { return false; }
  } full;
  const Variable home("XDG_DATA_HOME", data);
  system_context_menu(full, program)->install("mkv");
  EXPECT_TRUE(fs::exists(folder / "kept") && !fs::exists(folder / "kept/new"));
}

TEST_F(LinuxDesktop, ACommandThatIsNotWantedAnyMoreIsAskedToEndAndThenEnded) {
  for (const auto& [script, signal] : {std::pair("", "15"), {"trap '' TERM; ", "9"}}) {
    const std::string ready = folder / signal;
    const commands::Ending ending = commands::run({"sh", "-c", script + (": >'" + ready) + "'; exec sleep 600"}, {},
                                                  [&] { return !fs::exists(ready); });
    EXPECT_TRUE(!ending.status && ending.trouble == "It was ended by signal " + std::string(signal)) << ending.trouble;
  }
}

TEST_F(LinuxDesktop, EntriesOfOthersAndEditedOnesAreLeftAlone) {
  const std::string program = folder / "quorvel", entry = folder / "applications/quorvel-open.desktop",
                    menu = folder / "kio/servicemenus/quorvel.desktop", script = folder / "nautilus/scripts/Quorvel";
  for (const std::string& path : {program, entry}) write(path, "");
  change(folder.path(), program, "avi");
  fs::rename(script, folder / "mine");
  fs::create_symlink(folder / "mine", script);
  const std::string edited = contents(menu) + "\n", linked = contents(script);
  write(menu, edited);
  change(folder.path(), program, "mkv");
  change(folder.path(), program, "avi", false);
  EXPECT_EQ(contents(menu) + contents(entry) + contents(script), edited + linked);
}

/// In a process of its own, for GLib looks at the environment only once.
const SecondProcess open_target("open",
                                [](const std::string& target) { return system_launcher()->open(target) ? 0 : 1; });

TEST_F(LinuxDesktop, TheUsersChoiceOpensAddressesAndDocuments) {
  const std::string page = folder / "help page.html", address = "https://127.0.0.1/a?b=$(x)&c='d'";
  const std::string home = folder.path();
  write_program(folder / "recorder");
  write(folder / "applications/r.desktop",
        "[Desktop Entry]\nType=Application\nName=r\nExec=" + folder / "recorder" + " %u\n");
  write(folder / "mimeapps.list",
        "[Default Applications]\nx-scheme-handler/https=r.desktop\nx-scheme-handler/javascript=r.desktop\n"
        "x-scheme-handler/file=r.desktop\ntext/html=r.desktop\napplication/x-shellscript=r.desktop\n"
        "application/x-desktop=r.desktop\n");
  write(page, "x");
  const auto opened = [&](const std::string& target) {
    Start start = open_target.start(target);
    start.environment = {{"XDG_DATA_HOME", home}, {"XDG_CONFIG_HOME", home}, {"XDG_DATA_DIRS", home}};
    return ChildProcess(start).status() == 0;
  };
  for (const std::string& target : {"\"" + address + "\"", page}) {
    EXPECT_TRUE(opened(target)) << target;
    EXPECT_EQ(written("|"), (target == page ? page : address) + "|");
    fs::remove(folder / "out");
  }
  for (const std::string& refused :  // although there is something to open them with
       {"file://" + page, std::string("javascript:1"), folder / "recorder", folder / "applications/r.desktop"}) {
    EXPECT_FALSE(opened(refused)) << refused;
  }
}

}  // namespace
}  // namespace quorvel::testing

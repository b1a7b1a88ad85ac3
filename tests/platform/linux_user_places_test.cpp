#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>

#include "platform/disk_files.h"
#include "platform/linux/key_file_store.h"
#include "platform/linux/standard_folders.h"
#include "platform/linux/system_clock.h"
#include "platform/system.h"
#include "temporary_folder.h"
#include "text/failure.h"
#include "variable.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

TEST(StandardFolders, FollowTheEnvironmentWhereItIsAbsolute) {
  const TemporaryFolder folder;
  DiskFiles files;
  const Variable home("HOME", folder.path());
  using Value = std::optional<std::string>;
  const std::string config = folder / "c/", data = folder / "d/e//";
  for (const auto& [config_home, data_home, settings, data_folder] :
       {std::tuple<Value, Value, const char*, const char*>(config, data, "c/Quorvel/settings.ini", "d/e"),
        {"relative", "", ".config/Quorvel/settings.ini", ".local/share"},
        {Value(), Value(), ".config/Quorvel/settings.ini", ".local/share"}}) {
    const Variable one("XDG_CONFIG_HOME", config_home), other("XDG_DATA_HOME", data_home);
    EXPECT_EQ(standard_folders::settings_file(), folder / settings);
    EXPECT_EQ(application_data_folder(files), folder / data_folder);
    EXPECT_EQ(program_folder(), fs::read_symlink("/proc/self/exe").parent_path());
    EXPECT_TRUE(fs::is_directory(folder / data_folder) && !fs::exists(standard_folders::settings_file()));
  }
}

TEST(SystemClock, GivesTheUsersDayAndTime) {
  const Variable locale("LC_ALL", "no_SUCH");
  const auto day_in = [](const char* zone) {
    const Variable time_zone("TZ", zone);
    return std::chrono::sys_days(SystemClock().today());
  };
  EXPECT_GE(day_in("EAST-14"), day_in("WEST+12") + std::chrono::days(1));
  EXPECT_TRUE(std::regex_match(SystemClock().time_of_day(), std::regex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]")));
}

TEST(KeyFileStore, KeepsValuesAndWhatElseStandsInTheFile) {
  const TemporaryFolder folder;
  DiskFiles files;
  const std::string path = folder / "made/on/demand/settings.ini";
  KeyFileStore store(files, path);
  EXPECT_EQ(store.read_string("types"), std::nullopt);
  for (const char* const text : {"avi;mkv", "", "  blanks\\and\nlines\t ", "caf\xc3\xa9 #1 [x]=y"}) {
    store.write_string("types", text);
    EXPECT_EQ(store.read_string("types"), text);
    EXPECT_EQ(KeyFileStore(files, path).read_string("types"), text);
  }
  const std::string foreign =
      "# mine\n\n[Other]\nkey[de]=wert\n\n[Settings]\n# why\nlow=-1\nbig=4294967296\nword=12 x\nraw=\xff\n";
  files.replace(path, foreign);
  store.write_string("", std::string("3.4\0cut", 7));
  store.write_number("msgskip$1", 4'000'000'000);
  EXPECT_EQ(files.read(path), foreign + "version=3.4\nmsgskip$1=4000000000\n");
  const std::map<std::string, std::optional<std::uint32_t>> numbers{
      {"low", 4294967295}, {"msgskip$1", 4'000'000'000}, {"big", {}}, {"word", {}}, {"", {}}, {"none", {}}};
  for (const auto& [name, number] : numbers) EXPECT_EQ(store.read_number(name), number) << name;
  EXPECT_EQ(store.read_string("raw"), std::nullopt);
  for (const char* const name : {"a=b", "a\nb", "[x]", "#x", " x"}) EXPECT_THROW(store.write_number(name, 1), Failure);
  EXPECT_THROW(store.write_string("types", "\xff"), Failure);
  EXPECT_EQ(files.read(path), foreign + "version=3.4\nmsgskip$1=4000000000\n");
}

TEST(KeyFileStore, LeavesAFileThatItCannotUnderstandOrWriteAlone) {
  const TemporaryFolder folder;
  DiskFiles files;
  files.replace(folder / "garbled", "[Settings]\nconfirm=1\nnonsense\n");
  files.replace(folder / "cut", std::string("[Settings]\nconfirm=1\0\n", 22));
  files.create_folder(folder / "folder");
  for (const auto& [name, reason, readable] : {std::tuple("garbled", "nonsense", false),
                                               std::tuple("cut", "NUL", false),
                                               {"folder", "read", false},
                                               {"cut/below", "written", true}}) {
    const std::optional<std::string> before = files.read(folder / name);
    KeyFileStore store(files, folder / name);
    EXPECT_EQ(!store.trouble(), readable);
    EXPECT_EQ(store.read_number("confirm"), std::nullopt);
    try {
      store.write_number("confirm", 2);
      ADD_FAILURE() << name;
    } catch (const Failure& failure) {
      const std::string text = failure.what();
      EXPECT_TRUE(text.find(folder / name) != std::string::npos && text.find(reason) != std::string::npos) << text;
    }
    EXPECT_EQ(files.read(folder / name), before);
  }
}

}  // namespace
}  // namespace quorvel::testing

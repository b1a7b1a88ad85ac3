#include <gtest/gtest.h>

#include <regex>

#include "child_process.h"
#include "file_tools.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

struct UserPlaces : ::testing::Test {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
};

TEST_F(UserPlaces, FollowTheEnvironmentWhereItIsAbsolute) {
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
  EXPECT_EQ(program_folder(), fs::read_symlink("/proc/self/exe").parent_path());
}

TEST(SystemClock, GivesTheUsersDayAndTime) {
  const Variable locale("LC_ALL", "no_SUCH");
  const auto day_in = [](const char* zone) {
    const Variable time_zone("TZ", zone);
    return std::chrono::sys_days(system_clock()->today());
  };
  EXPECT_GE(day_in("EAST-14"), day_in("WEST+12") + std::chrono::days(1));
  EXPECT_TRUE(std::regex_match(system_clock()->time_of_day(), std::regex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]")));
}

TEST_F(UserPlaces, TheSettingsFileKeepsWhatElseStandsInIt) {
  const std::string path = data_folder_of(folder.path()) + "/settings.ini";
  const std::string foreign =
      "# mine\n\n[Other]\nkey[de]=wert\n\n[Settings]\n# why\nlow=-1\nbig=4294967296\nword=12 x\nraw=\xff\n";
  files->create_folder(data_folder_of(folder.path()));
  write_file(path, foreign);
  const auto store = settings_of(*files, folder.path());
  store->write_string("", "3.4");
  for (const char* const name : {"a=b", "a\nb", "[x]", "#x", " x", "x "}) {
    EXPECT_THROW(store->write_number(name, 1), Failure) << name;
    EXPECT_EQ(store->read_number(name), std::nullopt);
  }
  EXPECT_THROW(store->write_string("types", "\xff"), Failure);
  EXPECT_EQ(contents(path), foreign + "version=3.4\n");
  EXPECT_EQ(store->read_number("low"), 0xFFFFFFFFu);
  for (const char* const name : {"big", "word", ""}) EXPECT_EQ(store->read_number(name), std::nullopt) << name;
  EXPECT_EQ(store->read_string("raw"), std::nullopt);
}

TEST_F(UserPlaces, ASettingsFileThatCannotBeReadOrWrittenIsNamedAndStays) {
  const std::string cut("[Settings]\nconfirm=1\0\n", 22);
  fs::create_directories(folder / "folder/Quorvel/settings.ini");
  write_file(folder / "unwritable", "x");
  for (const auto& [home, text, reason] :
       {std::tuple("garbled", std::string("[Settings]\nconfirm=1\nnonsense\n"), "nonsense"),
        {"cut", cut, "NUL"},
        {"folder", "", "read"},
        {"unwritable", "", "written"}}) {
    const std::string path = data_folder_of(folder / home) + "/settings.ini";
    if (!text.empty()) fs::create_directories(data_folder_of(folder / home)), write_file(path, text);
    const auto store = settings_of(*files, folder / home);
    EXPECT_EQ(store->trouble().has_value(), home != std::string("unwritable"));
    EXPECT_EQ(store->read_number("confirm"), std::nullopt);
    try {
      store->write_number("confirm", 2);
      ADD_FAILURE() << home;
    } catch (const Failure& failure) {
      const std::string why = failure.what();
      EXPECT_TRUE(why.find(path) != std::string::npos && why.find(reason) != std::string::npos) << why;
    }
    EXPECT_EQ(contents(path), text);
  }
}

}  // namespace
}  // namespace quorvel::testing

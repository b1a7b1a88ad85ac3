#include <gtest/gtest.h>

#include "child_process.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

TEST(KeyValueStore, GivesBackWhatWasWrittenAndNothingElse) {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string name = "Quorvel test " + folder.name();
  const auto fresh = [&] { return settings_of(*files, folder / "made/on demand", name); };
  const std::unique_ptr<KeyValueStore> store = fresh();
  EXPECT_TRUE(!store->trouble() && !store->read_string("") && !store->read_number("context"));
  store->erase_all();  // nothing there is no failure
  for (const char* const text : {"avi;mkv", "", "  blanks\\and\nlines\t ", "café 日 #1 [x]=y"}) {
    store->write_string("types", text);
    EXPECT_EQ(store->read_string("types"), text);
    EXPECT_EQ(fresh()->read_string("types"), text);
  }
  store->write_string("", std::string("3.4\0cut", 7));
  for (const std::uint32_t number : {0u, 2u, 4'000'000'000u}) {
    store->write_number("msgskip$1", number);
    EXPECT_EQ(fresh()->read_number("msgskip$1"), number);
  }
  const std::unique_ptr<KeyValueStore> another = fresh();
  store->write_string("types", "ts");
  another->write_string("", "3.5");  // what was written meanwhile is kept
  EXPECT_EQ(fresh()->read_string("types").value_or("") + fresh()->read_string("").value_or(""), "ts3.5");
  EXPECT_FALSE(store->read_number("types") || store->read_number("") || store->read_number("none"));
  store->erase_all();
  EXPECT_FALSE(fresh()->read_string("types") || fresh()->read_string("") || store->read_number("msgskip$1"));
  EXPECT_FALSE(files->exists(folder / "made/on demand/" + name));
}

}  // namespace
}  // namespace quorvel::testing

#include "history/journal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "child_process.h"
#include "fake_ports.h"
#include "file_tools.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Request = FileOperationRequest;

/// Runs that are cut off, each within an operation of its own.
const SecondProcess cut_off("cut-off", [](const std::string& here) {
  const auto files = system_files();
  Lines log;
  const std::string folder = here + native::separator, work = folder + "work/";
  const std::string drive = folder + "drive" + native::separator, far = folder + "far" + native::separator;
  const auto begin_request = [&](const Request& request) {
    auto* const journal = new Journal(*files, log, work);
    journal->begin(request, files->stamp(request.source));
    return journal;
  };
  const auto begin = [&](int operation, const std::string& name) {
    const std::string temporary = operation == Request::Rename ? "" : folder + ".quorvel-" + name;
    begin_request({operation, folder + name, folder + "new " + name, 0, temporary});
  };
  write_file(folder + "new earlier", "");
  for (const char* const name :
       {"part", "last", "taken", "kept", "two", "both", "copied", "earlier", "ended", "away"}) {
    write_file(folder + name, name);
  }
  begin(Request::Move, "part"), write_file(folder + ".quorvel-part", "pa");
  begin(Request::Move, "last"), write_file(folder + ".quorvel-last", "la"), fs::remove(path_of(folder + "last"));
  begin(Request::Move, "taken"), write_file(folder + ".quorvel-taken", "ta");
  fs::rename(path_of(folder + "taken"), path_of(folder + "new taken"));  // by another run
  begin(Request::Rename, "kept"), write_file(folder + "new kept", "");
  begin(Request::Rename, "two"), fs::create_hard_link(path_of(folder + "two"), path_of(folder + "new two"));
  begin(Request::Move, "both"), write_file(folder + "new both", "both");
  begin(Request::Copy, "copied"), write_file(folder + "new copied", "copied");
  begin(Request::Copy, "earlier");
  // At the end of a move to another drive.
  const auto begin_far = [&](const std::string& name) {
    write_file(folder + ".quorvel-" + name, name);
    begin_request({Request::Move, folder + name, far + name, 0, far + ".quorvel-" + name});
  };
  begin_far("moved"), write_file(far + "moved", "moved");
  begin_far("renewed"), write_file(far + "renewed", "renewed"), write_file(folder + "renewed", "another file");
  begin_far("undone");
  begin_far("back"), fs::create_hard_link(path_of(folder + ".quorvel-back"), path_of(folder + "back"));
  begin_far("blank"), write_file(folder + "blank", "blank"), write_file(folder + ".quorvel-blank", "");
  begin_request({Request::Copy, folder + "ended", folder + "new ended", 0, folder + ".quorvel-ended"})->end();
  write_file(folder + "new ended", "");  // somebody else's
  begin_request({Request::Copy, folder + "away", drive + "away", 0, drive + ".quorvel-away"});
  write_file(work + "pending-broken", std::string("nonsense\0and more", 17));
  std::_Exit(0);
  return 0;
});

TEST(Journal, ALaterStartClearsUpWhatIsCertainlyLeftAndNothingElse) {
  const TemporaryFolder here;
  const std::string folder = here / "", work = here / "work/", cache = work + "cache/";
  for (const std::string& each : {work, cache, here / "far"}) fs::create_directory(path_of(each));
  for (const std::string name : {".quorvel-old", ".quorvel-young", "old.qc"}) {
    write_file(cache + name, name);
    if (name.ends_with("young")) continue;
    last_write_time(path_of(cache + name), fs::file_time_type::clock::now() - std::chrono::hours(2));
  }
  ASSERT_EQ(ChildProcess(cut_off.start(here.path())).status(), 0);
  const auto files = system_files();
  Lines log;
  const auto settled = [&] {
    log.list.clear();
    Journal(*files, log, work).settle();
    return static_cast<int>(log.list.size());
  };
  {
    // Of another copy that is at work.
    Journal busy(*files, log, work);
    busy.begin({Request::Copy, folder + "copied", folder + "another", 0, folder + ".quorvel-busy"}, {});
    write_file(folder + ".quorvel-busy", "co");
    EXPECT_EQ(settled(), 12) << ::testing::PrintToString(log.list);
    busy.end();
    EXPECT_TRUE(files->remove(folder + ".quorvel-busy"));
    busy.begin({Request::Move, folder + "both", here / "far/both", 0, here / "far/.quorvel-aside"}, {});
    write_file(folder + ".quorvel-aside", "both");
    busy.end();
    EXPECT_EQ(log.list.back(),
              "The name of " + folder + "both has been taken; the file is " + folder + ".quorvel-aside now");
    EXPECT_TRUE(files->remove(folder + ".quorvel-aside"));
  }
  std::string left;
  for (const auto& [path, bytes] : everything_in(folder)) {
    if (!fs::is_directory(path_of(path)) && !path.starts_with(work + "pending-"))
      left += path.substr(folder.size()) + "|";
  }
  std::ranges::replace(left, native::separator, '/');
  EXPECT_EQ(
      left,
      ".quorvel-last|.quorvel-undone|away|back|blank|both|copied|earlier|ended|far/moved|far/renewed|kept|new both|new "
      "copied|new "
      "earlier|new ended|new taken|part|renewed|two|"
      "work/cache/.quorvel-young|work/cache/old.qc|");
  fs::create_directory(path_of(folder + "drive"));
  write_file(folder + "drive/.quorvel-away", "aw");
  EXPECT_EQ(settled(), 3) << ::testing::PrintToString(log.list);
  EXPECT_FALSE(files->exists(folder + "drive/.quorvel-away"));
  EXPECT_TRUE(files->remove(folder + ".quorvel-last") && files->remove(folder + ".quorvel-undone"));
  EXPECT_EQ(settled(), 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(path_of(work)), {}), 1) << "only the cache";
}

}  // namespace
}  // namespace quorvel::testing

#include "shell/commands.h"

#include <gtest/gtest.h>

#include <fstream>

#include "../support/fake_ports.h"
#include "../support/temporary_folder.h"
#include "platform/linux/disk_files.h"
#include "platform/linux/gio_file_operation.h"
#include "platform/linux/key_file_store.h"

namespace quorvel::testing {
namespace {

struct Recorder : Launcher {
  Events events;
  bool works = true;
  bool open(const std::string& target) override { return events.add("open " + target), works; }
  bool start(const std::string& program, const std::string& argument) override {
    return events.add(program + "|" + argument), works;
  }
};

TEST(Commands, OpenWhatTheyNameOrSayWhyNot) {
  const TemporaryFolder folder;
  Recorder launcher;
  FakeUi ui(launcher.events);
  FakeClock clock(launcher.events);
  NoSocket socket;
  DiskFiles files;
  GioFileOperation shell([](auto, auto) { return true; });
  KeyFileStore store(files, folder / "settings.ini");
  Session session({store, shell, files, socket, ui, clock}, {"", folder.path(), {}, ""});
  Commands commands(session, launcher);
  const auto expect = [&](const std::string& event, const std::function<void()>& command) {
    command();
    EXPECT_EQ(std::exchange(launcher.events.list, {}), std::vector{event});
  };
  const auto help = [&] { commands.help(); };
  const auto website = [&] { commands.website(); };
  const auto update = [&] { commands.update(18446744073709551615U); };
  const std::string help_path = folder / "quorvel help.chm", none = "message Quorvel: There is no program to open this";

  expect("message Quorvel: Help File not found in program directory", help);
  expect("open https://quorvel.example/?v=3.4", website);
  expect("message Quorvel: No updater is set up.##New versions can be found at https://quorvel.example/?v=3.4", update);
  std::ofstream(help_path) << "x";
  store.write_string("website", "http://127.0.0.1/q/");
  store.write_string("updater", "/opt/up date");
  expect("open " + help_path, help);
  expect("open http://127.0.0.1/q/?v=3.4", website);
  expect("/opt/up date|package=Quorvel,apppath=" + folder.path() +
             ",runcount=123,version=3400,handle=18446744073709551615",
         update);
  launcher.works = false;
  for (const auto& command : {std::function<void()>(help), std::function<void()>(website)}) {
    command();
    EXPECT_TRUE(launcher.events.list.back().starts_with(none));
  }
  update();
  EXPECT_EQ(launcher.events.list.back(), "message Quorvel: The updater cannot be started: /opt/up date");
  EXPECT_EQ(compact_version(3, 4, 99) + compact_version(3, 4, 100) + compact_version(3, 12, 7),
            "34099"
            "34100"
            "31207");
}

}  // namespace
}  // namespace quorvel::testing

#include "fuzz_support.h"
#include "shell/startup.h"
#include "text/failure.h"

using namespace quorvel;

namespace {

struct Values : KeyValueStore {
  std::optional<std::string> trouble() const override { return {}; }
  std::optional<std::string> read_string(const std::string&) const override { return "3.4"; }
  std::optional<std::uint32_t> read_number(const std::string&) const override { return 1; }
  void write(const std::vector<Named>&) override {}
  void erase_all() override {}
};

struct NoOperation : FileOperation {
  int perform(const FileOperationRequest&) override { return 1; }
};

}  // namespace

/// Three texts from another copy, separated by line ends; the first comes before the program is up.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  testing::Events events;
  testing::FakeUi ui(events);
  testing::FakeDesktop desktop(events);
  testing::FakeClock clock(events);
  fuzz::NoSocket socket;
  fuzz::NoWeb web;
  fuzz::MemoryFiles files;
  files.held["/in/a.s01e01.avi"] = "x";
  Values values;
  NoOperation shell;
  Session session({values, shell, files, socket, web, ui, clock}, {"/data", "/program", "/w/", "http://127.0.0.1"});
  Startup startup(session, desktop, desktop);
  std::string_view rest = fuzz::text_of(data, size);
  for (int i = 0; i < 3; ++i) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string text(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    try {
      startup.handle_message(text);
      if (i == 0) startup.run({});
    } catch (const Failure&) {
      fuzz::check(!startup.loaded(), "only a copy that is closing refuses a text");
    }
  }
  for (int i = 1; i <= session.queue.count(); ++i) {
    fuzz::check(files.held.contains(session.queue.at(i).path), "only files that are there are queued");
  }
  return 0;
}

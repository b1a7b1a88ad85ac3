#include "fuzz_support.h"
#include "rules/filters.h"

using namespace quorvel;

/// What a load understands, a save and a load give back, and no byte of the user's file is lost on the way.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  testing::Events events;
  testing::FakeUi ui(events);
  fuzz::NoLog log;
  fuzz::MemoryFiles files;
  const std::string work_dir = "/w/", path = "/w/filters.dat", bytes(fuzz::text_of(data, size));
  files.held[path] = bytes;
  FilterList list(files, log, ui, work_dir);
  const bool whole = list.loadfilters();
  const int count = list.count();
  const bool saved = list.savefilters();
  const bool kept = files.held.contains(path) && files.held[path] == bytes;
  const bool copied = files.held.contains(path + ".bak") && files.held[path + ".bak"] == bytes;
  fuzz::check(kept || copied || bytes.empty(), "the user's bytes are somewhere");
  if (!whole || !saved) return 0;
  if (count > 0) {
    const std::string written = files.held[path];
    fuzz::check(list.loadfilters() && list.count() == count, "every entry comes back");
    fuzz::check(list.savefilters() && files.held[path] == written, "and as it was");
  }
  return 0;
}

#pragma once

#include "fuzz_support.h"

namespace quorvel::fuzz {

/// What a load understands, a save and a load give back, and no byte of the user's file is lost on the way.
template <typename List>
void check_rule_file(const std::string& name, bool (List::*load)(), bool (List::*save)(), const std::string& bytes) {
  testing::Events events;
  testing::FakeUi ui(events);
  NoLog log;
  MemoryFiles files;
  const std::string work_dir = "/w/", path = work_dir + name;
  files.held[path] = bytes;
  List list(files, log, ui, work_dir);
  const bool whole = (list.*load)();
  const int count = list.count();
  const bool saved = (list.*save)();
  const bool kept = files.held.contains(path) && files.held[path] == bytes;
  const bool copied = files.held.contains(path + ".bak") && files.held[path + ".bak"] == bytes;
  check(kept || copied || bytes.empty(), "the user's bytes are somewhere");
  if (!whole || !saved || count == 0) return;
  const std::string written = files.held[path];
  check((list.*load)() && list.count() == count, "every entry comes back");
  check((list.*save)() && files.held[path] == written, "and as it was");
}

}  // namespace quorvel::fuzz

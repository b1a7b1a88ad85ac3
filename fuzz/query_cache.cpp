#include "fuzz_support.h"
#include "listings/show_search.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Service service(R"([{"show":{"id":5,"url":"u","name":"Found",}}])");
  fuzz::MemoryFiles files;
  const std::string file = "/w/cache/name.qc", work_dir = "/w/";
  files.held[file] = fuzz::text_of(data, size);
  CacheFolder cache(files, work_dir);
  KnownShows known(cache);
  ShowSearch search(service.http, cache, known, service.log, "http://127.0.0.1");
  const std::optional<Show> cached = search.checkqcache("name");
  const std::optional<Show> show = search.searchtv("name", true);
  fuzz::check(show && (cached ? *show == *cached : show->name == "Found"), "a damaged cache leads to the service");
  fuzz::check(search.checkqcache("name") == show, "and is mended");
  return 0;
}

#include "fuzz_support.h"
#include "listings/show_search.h"
#include "text/failure.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Service service(fuzz::text_of(data, size));
  fuzz::MemoryFiles files;
  const std::string work_dir = "/w/";
  CacheFolder cache(files, work_dir);
  KnownShows known(cache);
  ShowSearch search(service.http, cache, known, service.log, "http://127.0.0.1");
  try {
    const std::optional<Show> show = search.searchtv("name", true);
    if (!show) return 0;
    fuzz::check(fuzz::fits_file_name(show->name), "a show's name fits a file name");
    const std::optional<Show> cached = search.checkqcache("name");
    fuzz::check(!cached || *cached == *show, "the cache gives back what the service gave");
  } catch (const Failure&) {
    fuzz::check(files.held.empty(), "nothing is cached of what cannot be read");
  }
  return 0;
}

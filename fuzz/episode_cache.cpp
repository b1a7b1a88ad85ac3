#include "fuzz_support.h"
#include "listings/episode_listings.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Service service(R"([{"id":1,"url":"u","name":"Found","season":9,"number":9,"airdate":"2015-01-01","x":0},])");
  fuzz::MemoryFiles files;
  const std::string file = "/w/cache/show.epc", work_dir = "/w/";
  files.held[file] = fuzz::text_of(data, size);
  CacheFolder cache(files, work_dir);
  KnownShows known(cache);
  EpisodeListings listings(service.http, cache, known, service.log, service.clock, "http://127.0.0.1");
  const bool readable = listings.checkepcache("show");
  const auto found = listings.getlistings({5, "show", "u"}, "show", 9, 9, {});
  fuzz::check(found.has_value(), "the episode comes from the cache or from the service");
  fuzz::check(readable || found->title == "Found", "a damaged cache leads to the service");
  fuzz::check(listings.checkepcache("show"), "and is mended");
  return 0;
}

#include "fuzz_support.h"
#include "text/code_page.h"

using namespace quorvel;

/// The first bytes are the sizes of the pieces in which the rest arrives, up to a 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzz::text_of(data, size);
  const std::size_t sizes_end = std::min(input.find('\0'), size);
  fuzz::Service service("");
  if (sizes_end > 0) service.socket.sizes = input.substr(0, sizes_end);
  service.socket.bytes = input.substr(std::min(sizes_end + 1, size));
  service.http.limits = {.body = 10'000, .header = 1'000, .redirects = 5, .patience = {}};
  std::string url = "http://127.0.0.1/";
  const std::string body = service.http.GetData(url, "");
  fuzz::check(body.size() <= service.http.limits.body, "the body keeps its limit");
  fuzz::check(service.socket.connections <= 6, "redirects keep their limit");
  if (service.socket.connections > 1) return 0;
  const std::size_t header_end = service.socket.bytes.find("\r\n\r\n");
  const std::string whole =
      header_end == std::string::npos ? "" : from_code_page(service.socket.bytes.substr(header_end + 4));
  fuzz::check(body.empty() || body == whole, "all that follows the header is the body");
  return 0;
}

#include "rule_file.h"
#include "rules/exceptions.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::check_rule_file("man.dat", &ExceptionList::loadefilters, &ExceptionList::saveefilters,
                        std::string(fuzz::text_of(data, size)));
  return 0;
}

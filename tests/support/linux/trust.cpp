#include "trust.h"

#include "variable.h"

namespace quorvel::testing {

struct Trust::System {
  const Variable file;
};

Trust::Trust(const std::string& file) : system_(new System{{"SSL_CERT_FILE", file}}) {}

Trust::~Trust() = default;

}  // namespace quorvel::testing

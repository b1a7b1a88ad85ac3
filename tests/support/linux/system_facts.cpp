#include "system_facts.h"

#include <cerrno>

namespace quorvel::testing::facts {

const std::vector<std::string> odd_names = {"quote \".avi", "line\nbreak.avi", "caf\xE9.avi"};
const std::string device = "/dev/null";
const std::string other_device = "/dev/shm";
const int call_step = 1;
const int too_long = ENAMETOOLONG, nowhere = ENOENT, taken = EEXIST;

}  // namespace quorvel::testing::facts

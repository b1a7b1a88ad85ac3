#pragma once

#include <string>

#include "platform/system.h"

/// Where things are on this machine; no path ends in a separator. The base-directory variables of the environment
/// decide, and the home folder where they are missing or relative.
namespace quorvel {

std::string settings_file();

}  // namespace quorvel

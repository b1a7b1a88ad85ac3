#pragma once

#include <string>

#include "platform/files.h"
#include "platform/log.h"

namespace quorvel {

/// The work directory, ending in a separator: the program's folder in `application_data`, made when missing, or
/// `program_folder` where there is no such folder. Neither argument ends in a separator.
std::string setworkdir(Files& files, Log& log, const std::string& application_data, const std::string& program_folder);

}  // namespace quorvel

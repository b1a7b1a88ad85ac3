#include "shell/work_dir.h"

#include "naming/file_names.h"
#include "shell/version.h"

namespace quorvel {

std::string setworkdir(Files& files, Log& log, const std::string& application_data, const std::string& program_folder) {
  if (!files.exists(application_data)) return with_separator(program_folder);
  const std::string folder = with_separator(application_data) + application_title;
  if (!files.exists(folder) && !files.create_folder(folder)) {
    log.debug_log("Error making work dir: " + folder + " cannot be created", LogLevel::Normal);
  }
  return with_separator(folder);
}

}  // namespace quorvel

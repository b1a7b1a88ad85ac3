#pragma once

#include <string>
#include <string_view>

#include "platform/files.h"

/// What is no new file of the user's, whatever else its name says.
namespace quorvel {

/// Whether a folder of that name is the system's, the trash's or one for what is not complete yet. Hidden ones count.
bool is_passed_over_as_folder(std::string_view name);

/// The same for a file: hidden ones, and what a program that downloads it has named so until it is whole.
bool is_passed_over_as_file(std::string_view name);

/// Whether something beside the file says that it is being downloaded, such as "NAME.part".
bool has_partial_beside(const Files& files, const std::string& path);

}  // namespace quorvel

#include "platform/native.h"

namespace quorvel::native {

const char separator = '\\';
const std::string_view system_name = "Windows";
const int no_trash_code = -1;  // no code of the system's own is negative
const std::string_view help_file = "quorvel help.chm";

// The file manager hands over the selected path without quotes, and names hold blanks.
const bool command_line_is_one_text = true;
const bool uninstall_clears_current_folder = true;

}  // namespace quorvel::native

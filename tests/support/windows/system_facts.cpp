#include "system_facts.h"

#include "file_tools.h"
#include "platform/windows/shell_file_operation.h"

namespace quorvel::testing::facts {

const std::vector<std::string> odd_names = {"日本 café.avi", "100% 'a' &b^.avi"};
const std::string device = "NUL";
const std::string other_device = text_of(std::filesystem::temp_directory_path());
const int call_step = 4;
const int too_long = ShellFileOperation::path_too_deep, nowhere = ShellFileOperation::invalid_path,
          taken = ShellFileOperation::name_taken;

}  // namespace quorvel::testing::facts

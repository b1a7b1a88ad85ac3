#include "shell/uninstall.h"

#include <exception>
#include <functional>

#include "naming/file_names.h"
#include "platform/native.h"
#include "shell/preferences.h"
#include "shell/version.h"

namespace quorvel {
namespace {

void ignoring_failures(const std::function<void()>& step) {
  try {
    step();
  } catch (const std::exception&) {
    return;  // there is nobody left to tell, and the other steps still count
  }
}

void remove_data_folder(Session& session) {
  using Request = FileOperationRequest;
  if (session.places.application_data.empty()) return;
  const std::string folder = with_separator(session.places.application_data) + application_title;
  if (!session.ports.files.exists(folder)) return;
  session.ports.shell.perform(
      {Request::Delete, folder, "", Request::Silent | Request::NoConfirmation | Request::SimpleProgress});
}

}  // namespace

void uninstall(Session& session) {
  ignoring_failures([&] { remove_menu_entries(session); });
  ignoring_failures([&] { session.ports.key_values.erase_all(); });
  // A bare name on purpose: no work directory has been set.
  static constexpr const char* rules = "filters.dat";
  ignoring_failures([&] {
    Files& files = session.ports.files;
    if (native::uninstall_clears_current_folder && files.exists(rules)) files.remove(rules);
  });
  ignoring_failures([&] { remove_data_folder(session); });
}

}  // namespace quorvel

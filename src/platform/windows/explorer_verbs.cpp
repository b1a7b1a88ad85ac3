#include "platform/system.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "text/case.h"

namespace quorvel {
namespace {

const std::string folders_and_videos = "DIR";
const std::string verb = "\\shell\\Quorvel";
const std::string command = verb + "\\command";
const std::string users_classes = "Software\\Classes\\";

std::string class_of(const std::string& extension) {
  return registry::read_string(HKEY_CLASSES_ROOT, "." + extension, "").value_or(std::string());
}

/// Only an administrator may write the classes of all users; the user's own are shown with them. Failures are ignored:
/// without the rights for either the entry is missing.
void write(const std::string& key, const std::string& text) {
  if (registry::write_string(HKEY_CLASSES_ROOT, key, "", text) == ERROR_SUCCESS) return;
  static_cast<void>(registry::write_string(HKEY_CURRENT_USER, users_classes + key, "", text));
}

/// Keys that hold other keys stay.
void remove_key(const std::string& key) {
  static_cast<void>(RegDeleteKeyW(HKEY_CURRENT_USER, to_utf16_or_marks(users_classes + key).c_str()));
  static_cast<void>(RegDeleteKeyW(HKEY_CLASSES_ROOT, to_utf16_or_marks(key).c_str()));
}

void remove_verb(const std::string& of) {
  // Earlier versions have written the "ddeexec" keys.
  for (const char* const leaf : {"\\ddeexec\\Application", "\\ddeexec\\Topic", "\\ddeexec", "\\command", ""}) {
    remove_key(of + verb + leaf);
  }
}

/// Verbs in the registry's class registrations: a key "shell\Quorvel\command" whose value starts the program with the
/// selected path, unquoted.
class ExplorerVerbs : public ContextMenu {
 public:
  explicit ExplorerVerbs(std::string program) : program_(std::move(program)) {}

  /// A type without a class is given one, its name in lower case and "file"; it stays when the verb is removed.
  void install(const std::string& extension) override {
    const std::string text = "\"" + program_ + "\" %1";
    if (extension == folders_and_videos) {
      write("SystemFileAssociations\\video" + command, text);
      write("Directory" + command, text);
      return;
    }
    std::string name = class_of(extension);
    write("SystemFileAssociations\\." + lower_case(extension) + command, text);
    if (name.empty()) {
      name = lower_case(extension) + "file";
      write("." + extension, name);
    }
    write(name + command, text);
  }

  /// Nothing for a type without a class, not even its entry under "SystemFileAssociations".
  void remove(const std::string& extension) override {
    if (extension == folders_and_videos) {
      remove_verb("Directory");
      // Without "\shell", so the entry for videos stays; installations count on finding it.
      remove_key("SystemFileAssociations\\video\\Quorvel\\command");
      remove_key("SystemFileAssociations\\video\\Quorvel");
      return;
    }
    const std::string name = class_of(extension);
    if (name.empty()) return;
    remove_verb(name);
    remove_key("SystemFileAssociations\\." + lower_case(extension) + command);
  }

 private:
  const std::string program_;
};

}  // namespace

std::unique_ptr<ContextMenu> system_context_menu(Files&, const std::string& program) {
  return std::make_unique<ExplorerVerbs>(program);
}

}  // namespace quorvel

#include "shell/commands.h"

#include "naming/file_names.h"
#include "platform/native.h"
#include "shell/version.h"

namespace quorvel {

std::string help_file(const Places& places) {
  return absolute_path(with_separator(places.program).append(native::help_file));
}

std::string compact_version(int major, int minor, int revision) {
  return std::to_string(major) + std::to_string(minor) + (revision <= 99 ? "0" : "") + std::to_string(revision);
}

void Commands::help() {
  const std::string path = help_file(session_.places);
  session_.ports.files.exists(path) ? open(path) : show(no_help_file);
}

std::string Commands::website_address() const {
  std::string site = session_.settings_store.read_string("website");
  if (site.empty()) site = default_website;
  while (site.ends_with('/')) site.pop_back();
  return site;
}

std::string Commands::address() const {
  return website_address() + "/?v=" + short_version;
}

void Commands::website() {
  open(address());
}

void Commands::update(std::uintptr_t handle) {
  const std::string updater = session_.settings_store.read_string("updater");
  if (updater.empty()) {
    return show("No updater is set up.##New versions can be found at " + address());
  }
  const std::string argument = std::string("package=") + application_title + ",apppath=" + session_.places.program +
                               ",runcount=123,version=" + compact_version(major_version, minor_version, revision) +
                               ",handle=" + std::to_string(handle);
  if (!launcher_.start(updater, argument)) show("The updater cannot be started: " + updater);
}

void Commands::open(const std::string& target) {
  if (!launcher_.open(target)) show("There is no program to open this with: " + target);
}

void Commands::show(const std::string& text) {
  session_.ports.ui.show_message(0, application_title, text, MessageIcon::Warning);
}

}  // namespace quorvel

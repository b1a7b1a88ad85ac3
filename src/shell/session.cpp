#include "shell/session.h"

#include <cstdlib>

#include "shell/preferences.h"
#include "shell/version.h"
#include "shell/work_dir.h"

namespace quorvel {

std::string listings_address() {
  const char* const given = std::getenv("QUORVEL_API_BASE");
  std::string address = given != nullptr && *given != '\0' ? given : default_api_base;
  while (address.ends_with('/')) address.pop_back();
  return address;
}

Session::Session(Ports ports, Places places)
    : ports(ports),
      places(std::move(places)),
      log(ports.clock),
      settings_store(ports.key_values, ports.ui),
      filters(ports.files, log, ports.ui, settings.work_dir),
      exceptions(ports.files, log, ports.ui, settings.work_dir),
      http(ports.socket, ports.ui, log),
      cache(ports.files, settings.work_dir),
      search(http, cache, log, this->places.api_base),
      listings(http, cache, log, ports.clock, this->places.api_base),
      jobs(ports.shell, ports.files, log),
      view(queue, filters, ports.ui),
      pipeline({settings, filters, exceptions, search, listings, jobs, ports.ui, log}),
      processor(queue, settings, ports.ui, log, pipeline, view),
      intake(queue, settings, ports.files, ports.ui, [this] { return processor.queue_busy(); }),
      undo(queue, jobs, log, view) {}

void Session::start() {
  write_banner();
  find_work_dir();
  load_preferences(*this);
  load_rules();
}

void Session::write_banner() {
  log.set_level(LogLevel::Normal);
  log.debug_log(
      std::string(application_title) + " " + short_version + " (build " + std::to_string(revision) + ") started",
      LogLevel::Normal);
}

void Session::find_work_dir() {
  settings.work_dir =
      places.work_dir ? *places.work_dir : setworkdir(ports.files, log, places.application_data, places.program);
}

void Session::load_rules() {
  if (filters.loadfilters()) {
    log.debug_log("Loaded " + std::to_string(filters.count()) + " afilters", LogLevel::Verbose);
  } else {
    log.debug_log("Failed to load afilters", LogLevel::Normal);
  }
  if (exceptions.loadefilters()) {
    log.debug_log("Loaded " + std::to_string(exceptions.count()) + " efilters", LogLevel::Verbose);
  } else {
    log.debug_log("Failed to load efilters", LogLevel::Normal);
  }
}

}  // namespace quorvel

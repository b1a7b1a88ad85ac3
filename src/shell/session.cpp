#include "shell/session.h"

#include <cstdlib>

#include "naming/file_names.h"
#include "shell/preferences.h"
#include "shell/version.h"

namespace quorvel {

std::string listings_address() {
  const char* const given = std::getenv("QUORVEL_API_BASE");
  std::string address = given != nullptr && *given != '\0' ? given : default_api_base;
  while (address.ends_with('/')) address.pop_back();
  return address;
}

std::string user_agent() {
  return std::string(application_title) + "/" + full_version + " (+" + default_website + ")";
}

Session::Session(Ports ports, Places places)
    : ports(ports),
      places(std::move(places)),
      log(ports.clock),
      settings_store(ports.key_values, ports.ui),
      filters(ports.files, log, ports.ui, settings.work_dir),
      exceptions(ports.files, log, ports.ui, settings.work_dir),
      pace(ports.clock, ports.files, settings.work_dir),
      http(ports.socket, ports.ui, ports.clock, log, pace),
      cache(ports.files, settings.work_dir),
      known_shows(cache),
      search(http, cache, known_shows, log, this->places.api_base),
      listings(http, cache, known_shows, log, ports.clock, this->places.api_base),
      journal(ports.files, log, settings.work_dir),
      history(ports.files, ports.clock, log, settings.work_dir),
      jobs(ports.shell, ports.files, journal, history, settings.verify, log),
      past_undo(history, jobs, ports.files, log),
      batch(jobs, ports.files),
      view(queue, filters, ports.ui),
      answers(ports.files, log, settings.work_dir),
      catalogue(ports.web, answers, pace, ports.clock, ports.ui, log, this->places.api_base),
      lookup(catalogue, answers),
      classic(settings, log, {exceptions, search, listings}),
      exact(settings, exceptions, lookup, log),
      companions(settings, queue, ports.files),
      tidying(settings, jobs, ports.files, log),
      duplicates(settings, companions, history, jobs, ports.files, log),
      pipeline({settings, filters, companions, tidying, duplicates, jobs, ports.files, ports.ui, log}),
      processor(
          queue, settings, ports.ui, log, history,
          [this]() -> Identification& { return settings.exact ? static_cast<Identification&>(exact) : classic; },
          pipeline, batch, view),
      intake(queue, settings, ports.files, ports.ui, log, [this] { return processor.queue_busy(); }),
      undo(queue, jobs, history, log, view) {}

void Session::start() {
  write_banner();
  open();
  load_rules();
}

void Session::open() {
  setworkdir();
  load_preferences(*this);
  settle();
}

void Session::write_banner() {
  log.set_level(LogLevel::Normal);
  log.debug_log(
      std::string(application_title) + " " + short_version + " (build " + std::to_string(revision) + ") started",
      LogLevel::Normal);
}

void Session::setworkdir() {
  const std::string& data = places.application_data;
  if (places.work_dir) {
    settings.work_dir = *places.work_dir;
  } else if (!ports.files.exists(data)) {
    settings.work_dir = with_separator(places.program);
  } else {
    const std::string folder = with_separator(data) + application_title;
    if (!ports.files.exists(folder) && !ports.files.create_folder(folder)) {
      log.debug_log("Error making work dir: " + folder + " cannot be created", LogLevel::Normal);
    }
    settings.work_dir = with_separator(folder);
  }
  if (cache.is_link()) {
    log.debug_log("The folder " + cache.path() + " is a link, so nothing is kept in it", LogLevel::Normal);
  }
}

void Session::settle() {
  journal.settle();
  if (!history.exists()) return;
  past_undo.settle(settings.work_dir);
  history.forget_before(std::chrono::floor<std::chrono::seconds>(ports.clock.utc()) -
                        std::chrono::days(settings.history));
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

#pragma once

#include <optional>
#include <string>

#include "catalogue/lookup.h"
#include "fileops/batch.h"
#include "fileops/past_undo.h"
#include "history/history.h"
#include "history/journal.h"
#include "listings/cache_folder.h"
#include "listings/episode_listings.h"
#include "listings/show_search.h"
#include "platform/clock.h"
#include "platform/context_menu.h"
#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/folder_watch.h"
#include "platform/key_value_store.h"
#include "platform/socket_control.h"
#include "platform/user_interface.h"
#include "platform/web_client.h"
#include "queue/classic_identification.h"
#include "queue/exact_identification.h"
#include "queue/intake.h"
#include "queue/pipeline.h"
#include "queue/processor.h"
#include "queue/queue_view.h"
#include "queue/settings.h"
#include "queue/undo.h"
#include "queue/work_queue.h"
#include "rules/exceptions.h"
#include "rules/filters.h"
#include "shell/debug_log.h"
#include "shell/settings_store.h"
#include "transport/http_client.h"

namespace quorvel {

/// Everything outside the core, one object a port.
struct Ports {
  KeyValueStore& key_values;
  FileOperation& shell;
  Files& files;
  SocketControl& socket;
  WebClient& web;
  UserInterface& ui;
  Clock& clock;
  ContextMenu* context_menu = nullptr;  // null where the program has no entries in any menu
  FolderWatch* folder_watch = nullptr;  // null where it watches no folders
};

/// Where a session finds things.
struct Places {
  std::string application_data;         // without a separator at its end, as the next
  std::string program;                  // the program's folder
  std::optional<std::string> work_dir;  // ending in a separator, in place of the one in application_data
  std::string api_base;                 // of the listings service, without a trailing slash
};

/// The listings service's address, without a trailing slash: the environment's QUORVEL_API_BASE, or else the build's.
std::string listings_address();

/// The program, its version and where it is from, as servers are told in the exact way.
std::string user_agent();

/// Everything that lives as long as the program runs. The ports outlive it.
class Session {
 public:
  Session(Ports ports, Places places);

  /// Writes the banner, finds the work directory, loads the preferences and the rules.
  void start();
  /// The same without the banner and the rules, where no file is to be renamed.
  void open();

  /// The steps of start() that are the session's own.
  void write_banner();
  /// The folder of the program's name in the one for applications' data, made when missing; the program's own folder
  /// where there is no such place.
  void setworkdir();
  /// Clears up after runs that were cut off, and forgets what is too old for the history. The preferences are known.
  void settle();
  void load_rules();

  /// Ends the pass as its processor does, and the transfer in progress at once.
  void stop() {
    processor.stop();
    http.cancel();
    catalogue.cancel();
  }

  const Ports ports;
  const Places places;
  DebugLog log;
  Settings settings;
  SettingsStore settings_store;
  WorkQueue queue;
  FilterList filters;
  ExceptionList exceptions;
  Pace pace;
  HttpClient http;
  CacheFolder cache;
  KnownShows known_shows;
  ShowSearch search;
  EpisodeListings listings;
  Journal journal;
  History history;
  FileJobs jobs;
  PastUndo past_undo;
  Batch batch;
  QueueView view;
  AnswerStore answers;
  CatalogueService catalogue;
  Lookup lookup;
  ClassicIdentification classic;
  ExactIdentification exact;
  Companions companions;
  Tidying tidying;
  Duplicates duplicates;
  Pipeline pipeline;
  Processor processor;
  Intake intake;
  Undo undo;
};

}  // namespace quorvel

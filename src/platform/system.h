#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/context_menu.h"
#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/folder_watch.h"
#include "platform/instance_channel.h"
#include "platform/key_value_store.h"
#include "platform/launcher.h"
#include "platform/socket_control.h"
#include "platform/web_client.h"

/// The ports as this system has them. One definition per system, chosen by the build.
namespace quorvel {

std::unique_ptr<Files> system_files();

/// No file is replaced without `may_replace`. Only with it may the system show windows of its own, as Windows' shell
/// does.
std::unique_ptr<FileOperation> system_file_operation(CopyProgress progress, MayReplace may_replace);

/// The user's settings for the program called `name`; `files` outlives them.
std::unique_ptr<KeyValueStore> system_key_values(Files& files, const std::string& name);

std::unique_ptr<SocketControl> system_socket();
/// `agent`: what servers are told of who asks.
std::unique_ptr<WebClient> system_web_client(const std::string& agent);
std::unique_ptr<Clock> system_clock();
std::unique_ptr<FolderWatch> system_folder_watch();

/// `name` is the program's, `caption` that of its main window; some systems find the running copy by them.
std::unique_ptr<InstanceChannel> system_instance_channel(
    const std::string& name, const std::string& caption,
    std::chrono::milliseconds patience = InstanceChannel::usual_patience);

/// The entries start `program`, a full path; `files` outlives them.
std::unique_ptr<ContextMenu> system_context_menu(Files& files, const std::string& program);

std::unique_ptr<Launcher> system_launcher();

/// The folder for programs' data, without a separator at its end; made when missing, and not there where that fails.
std::string application_data_folder(Files& files);

/// The running program; empty when the system does not tell.
std::string program_file();

/// The folder that holds it, without a separator at its end.
std::string program_folder();

/// What the program was started with, without its own name, as the system has it: byte for byte on Linux, in UTF-8 on
/// Windows, where nothing is taken for a pattern of file names.
std::vector<std::string> separate_arguments(int argc, char** argv);

/// The same, or where the command line is one text (see native.h) that text as it was given.
std::vector<std::string> command_line_arguments(int argc, char** argv);

}  // namespace quorvel

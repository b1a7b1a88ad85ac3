#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/context_menu.h"
#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/instance_channel.h"
#include "platform/key_value_store.h"
#include "platform/launcher.h"
#include "platform/socket_control.h"

/// The ports as this system has them. One definition per system, chosen by the build.
namespace quorvel {

std::unique_ptr<Files> system_files();

/// `progress` is told the bytes done and to do now and then during a long copy; answering false gives the copy up.
/// `replace` is asked whether the existing file at a path may go to the trash for the one that is moved or copied there;
/// without it none may.
std::unique_ptr<FileOperation> system_file_operation(std::function<bool(std::uint64_t, std::uint64_t)> progress,
                                                     std::function<bool(const std::string&)> replace);

/// The user's settings; `files` outlives them.
std::unique_ptr<KeyValueStore> system_key_values(Files& files);

std::unique_ptr<SocketControl> system_socket();
std::unique_ptr<Clock> system_clock();
std::unique_ptr<InstanceChannel> system_instance_channel();

/// For the running program; `files` outlives it.
std::unique_ptr<ContextMenu> system_context_menu(Files& files);

std::unique_ptr<Launcher> system_launcher();

/// The folder for programs' data, without a separator at its end; made when missing, and not there where that fails.
std::string application_data_folder(Files& files);

/// The folder of the running program, without a separator at its end; empty when the system does not tell.
std::string program_folder();

}  // namespace quorvel

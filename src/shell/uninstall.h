#pragma once

#include "shell/session.h"

namespace quorvel {

/// Takes back what the program has put into the user's account: menu entries, settings, rules and caches. Whatever
/// fails is left out, and nothing is shown. The session has not been started.
void uninstall(Session& session);

}  // namespace quorvel

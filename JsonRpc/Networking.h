#pragma once

/// The process's network set-up, once around the life of its servers. POSIX sockets need none, so these only
/// mark the places where other platforms do.
namespace networking {

/// True when sockets can be used. Any thread.
bool init();

/// Any thread, after the last server has been closed.
void cleanup();

}  // namespace networking

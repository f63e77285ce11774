// Threads as capabilities: an operation that one thread alone may call requires that thread's role, and
// clang refuses to compile a call from where the role is not held.
#pragma once

#include "ServiceUtil/ThreadSafety.h"

class CAPABILITY("role") ThreadRole {
  public:
    /// States that the caller's thread has the role from here to the end of the function. For the function
    /// that a thread begins with, and for code that has the thread to itself, such as destructors.
    void Assert() const ASSERT_CAPABILITY(this) {}
};

/// The thread that serves requests. Everything that belongs to it alone requires this role.
inline constexpr ThreadRole kServerThread;

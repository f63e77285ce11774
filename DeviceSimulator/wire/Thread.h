// The library's own threads. They take none of the process's signals, which are meant for threads that it
// knows.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <thread>
#include <utility>

namespace DeviceSimulator {

/// `name` has at most 15 characters.
template <typename Function>
std::thread StartThread(const char* name, Function function) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    struct Restore {
        const sigset_t* mask;
        ~Restore() { pthread_sigmask(SIG_SETMASK, mask, nullptr); }
    } const restore{&before};
    std::thread thread(std::move(function));
    pthread_setname_np(thread.native_handle(), name);
    return thread;
}

}  // namespace DeviceSimulator

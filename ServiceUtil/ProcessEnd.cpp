#include "ServiceUtil/ProcessEnd.h"

#include <unistd.h>

#include <system_error>
#include <thread>

void EndProcessAfter(std::chrono::milliseconds time, int status) {
    try {
        std::thread([time, status] {
            std::this_thread::sleep_for(time);
            _exit(status);
        }).detach();
    } catch (const std::system_error&) {
        _exit(status);
    }
}

// Announces a device-manager call, makes it, and reports its failure: the one place where this happens.
#pragma once

#include <chrono>

#include "DeviceManager/DeviceManager.h"
#include "ServiceUtil/Logger.h"

/// What is unusual about a call. A call without any of it writes its name and "\n" at INFO before it is made,
/// and "Return from <name> is :<result>\n" at WARN when it fails. Texts are literals.
struct CallOptions {
    int announceLevel = LogLevel::kInfo;
    bool announced = true;  ///< false: the caller has announced it
    bool announcedAfterwards = false;

    bool failureReported = true;
    bool successReported = false;  ///< reports every result as a failure is reported
    int failureLevel = LogLevel::kWarn;
    const char* failureName = nullptr;  ///< in place of the call's name
    const char* failureText = nullptr;  ///< in place of all that stands before the result
    const char* countText = nullptr;    ///< ends the report, with the value that `count` has after the call
    const u32* count = nullptr;

    /// Above 0: the call is repeated for as long as the device answers that it is busy, after such a pause.
    std::chrono::milliseconds busyPause{0};
    bool firstRepeatAtOnce = false;
};

/// A function of the device manager with its name and the source position of whoever calls it.
template <typename Function>
struct DeviceCall {
    Function function;
    const char* name;
    CallOptions options;
    const char* file;
    int line;
};

/// The call of one function, to be made by a DeviceLink; what is unusual about it follows as members of
/// CallOptions: DEVICE_CALL(eDevMgriPodPlay), DEVICE_CALL(eDevMgriPodStop, .failureReported = false).
#define DEVICE_CALL(function, ...) MakeDeviceCall(function, #function, CallOptions{__VA_ARGS__})

template <typename Function>
DeviceCall<Function> MakeDeviceCall(Function function, const char* name, const CallOptions& options,
                                    const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return {function, name, options, file, line};
}

/// The log entries of one call. Any thread.
class CallLog {
  public:
    template <typename Function>
    explicit CallLog(const DeviceCall<Function>& call)
        : m_options(call.options), m_name(call.name), m_file(call.file), m_line(call.line) {}

    void BeforeCall() const;
    void AfterCall(u32 code) const;
    void Busy() const;

  private:
    void Announce() const;
    void Report(u32 code) const;

    const CallOptions& m_options;
    const char* m_name;
    const char* m_file;
    int m_line;
};

/// Makes the call with its log entries; returns the result. While a call that is to be repeated is answered
/// "busy", `pause(time)` is called before each repetition; it answers true to end them.
template <typename Pause, typename... Parameters, typename... Arguments>
u32 MakeCall(const DeviceCall<u32 (*)(Parameters...)>& call, Pause pause, Arguments... arguments) {
    const CallLog log(call);
    const CallOptions& options = call.options;
    const bool repeats = options.busyPause.count() > 0;
    log.BeforeCall();
    u32 code = call.function(arguments...);
    if (repeats && options.firstRepeatAtOnce && code == DEV_MGR_IAP_APP_BUSY) {
        code = call.function(arguments...);
    }
    while (repeats && code == DEV_MGR_IAP_APP_BUSY) {
        log.Busy();
        if (pause(options.busyPause)) {
            break;
        }
        code = call.function(arguments...);
    }
    log.AfterCall(code);
    return code;
}

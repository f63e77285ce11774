// Announces a device-manager call, makes it, and reports its failure: the one place where this happens.
#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/Outcome.h"
#include "ServiceUtil/Logger.h"

/// One call of the device manager with its log entries, which carry the source position of whoever makes it:
///
///     u32 code = DeviceCall("eDevMgrGetNumDevices")(eDevMgrGetNumDevices, processHandle, &count);
///
/// writes "eDevMgrGetNumDevices\n" at INFO before the call and "Return from eDevMgrGetNumDevices is :%s\n" at
/// WARN when it fails. What differs from that is said with the members below. Texts are not copied: they are
/// literals, or outlive the call. Any thread.
class DeviceCall {
  public:
    explicit DeviceCall(const char* name, const char* file = __builtin_FILE(), int line = __builtin_LINE())
        : m_name(name), m_failureName(name), m_file(file), m_line(line) {}

    DeviceCall& AnnouncedAt(int level);
    /// Writes `text` in place of the name and its newline.
    DeviceCall& AnnouncedAs(std::string text);
    DeviceCall& AnnouncedAfterwards();

    DeviceCall& FailureAt(int level);
    /// Reports a failure under another name than the call's.
    DeviceCall& FailureNamed(const char* name);
    /// Replaces the whole of what stands around the result's name: "<before><name>\n".
    DeviceCall& FailureAs(const char* before);
    /// Ends a failure's report in `text` and the value that `count` has after the call.
    DeviceCall& FailureWithCount(const char* text, const u32& count);
    DeviceCall& FailureUnreported();
    /// Reports every result at `level`, success included.
    DeviceCall& ReportedAlwaysAt(int level);

    enum class FirstRepeat { AfterPause, AtOnce };
    /// Repeats the call for as long as the device answers that it is busy, pausing before each repetition.
    DeviceCall& RepeatedWhileBusy(std::chrono::microseconds pause,
                                  FirstRepeat first = FirstRepeat::AfterPause);

    template <typename... Parameters, typename... Arguments>
    u32 operator()(u32 (*function)(Parameters...), Arguments&&... arguments) const {
        if (!m_announceAfterwards) {
            Announce();
        }
        u32 code = function(arguments...);
        if (code == DEV_MGR_IAP_APP_BUSY && m_busyPause.count() > 0 && m_firstRepeat == FirstRepeat::AtOnce) {
            code = function(arguments...);
        }
        while (code == DEV_MGR_IAP_APP_BUSY && m_busyPause.count() > 0) {
            PauseWhileBusy();
            code = function(arguments...);
        }
        if (m_announceAfterwards) {
            Announce();
        }
        if (code != DEV_MGR_SUCCESS || m_reportSuccess) {
            Report(code);
        }
        return code;
    }

  private:
    void Announce() const;
    void PauseWhileBusy() const;
    void Report(u32 code) const;

    const char* m_name;
    const char* m_failureName;
    const char* m_failureBefore = nullptr;
    const char* m_countText = nullptr;
    const u32* m_count = nullptr;
    std::string m_announcement;
    int m_announceLevel = LogLevel::kInfo;
    int m_failureLevel = LogLevel::kWarn;
    bool m_announceAfterwards = false;
    bool m_reportFailure = true;
    bool m_reportSuccess = false;
    FirstRepeat m_firstRepeat = FirstRepeat::AfterPause;
    std::chrono::microseconds m_busyPause{0};
    const char* m_file;
    int m_line;
};

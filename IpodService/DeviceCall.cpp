#include "IpodService/DeviceCall.h"

#include <thread>

#include "IpodService/DeviceManagerNames.h"

DeviceCall& DeviceCall::AnnouncedAt(int level) {
    m_announceLevel = level;
    return *this;
}

DeviceCall& DeviceCall::AnnouncedAs(std::string text) {
    m_announcement = std::move(text);
    return *this;
}

DeviceCall& DeviceCall::AnnouncedAfterwards() {
    m_announceAfterwards = true;
    return *this;
}

DeviceCall& DeviceCall::FailureAt(int level) {
    m_failureLevel = level;
    return *this;
}

DeviceCall& DeviceCall::FailureNamed(const char* name) {
    m_failureName = name;
    return *this;
}

DeviceCall& DeviceCall::FailureAs(const char* before) {
    m_failureBefore = before;
    return *this;
}

DeviceCall& DeviceCall::FailureWithCount(const char* text, const u32& count) {
    m_countText = text;
    m_count = &count;
    return *this;
}

DeviceCall& DeviceCall::FailureUnreported() {
    m_reportFailure = false;
    return *this;
}

DeviceCall& DeviceCall::ReportedAlwaysAt(int level) {
    m_failureLevel = level;
    m_reportSuccess = true;
    return *this;
}

DeviceCall& DeviceCall::RepeatedWhileBusy(std::chrono::microseconds pause, FirstRepeat first) {
    m_busyPause = pause;
    m_firstRepeat = first;
    return *this;
}

void DeviceCall::Announce() const {
    if (m_announcement.empty()) {
        CLogger::Log(m_file, m_line, m_announceLevel, "%s\n", m_name);
    } else {
        CLogger::Log(m_file, m_line, m_announceLevel, "%s", m_announcement.c_str());
    }
}

void DeviceCall::PauseWhileBusy() const {
    CLogger::Log(m_file, m_line, LogLevel::kWarn, "%s - DEV_MGR_IAP_APP_BUSY\n", m_name);
    std::this_thread::sleep_for(m_busyPause);
}

void DeviceCall::Report(u32 code) const {
    if (!m_reportFailure) {
        return;
    }
    const char* result = ResultCodeName(code);
    if (m_failureBefore != nullptr) {
        CLogger::Log(m_file, m_line, m_failureLevel, "%s%s\n", m_failureBefore, result);
    } else if (m_count != nullptr) {
        CLogger::Log(m_file, m_line, m_failureLevel, "Return from %s is :%s%s%d\n", m_failureName, result,
                     m_countText, static_cast<int>(*m_count));
    } else {
        CLogger::Log(m_file, m_line, m_failureLevel, "Return from %s is :%s\n", m_failureName, result);
    }
}

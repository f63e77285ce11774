#include "IpodService/DeviceCall.h"

#include "IpodService/DeviceManagerNames.h"

void CallLog::BeforeCall() const {
    if (!m_options.announcedAfterwards) {
        Announce();
    }
    if (!m_options.note.empty()) {
        CLogger::Log(m_file, m_line, LogLevel::kDebug, "%s", m_options.note.c_str());
    }
}

void CallLog::AfterCall(u32 code) const {
    if (m_options.announcedAfterwards) {
        Announce();
    }
    if (m_options.successReported || (m_options.failureReported && code != DEV_MGR_SUCCESS)) {
        Report(code);
    }
}

void CallLog::Busy() const {
    CLogger::Log(m_file, m_line, LogLevel::kWarn, "%s - DEV_MGR_IAP_APP_BUSY\n", m_name);
}

void CallLog::Announce() const {
    if (m_options.announcement.empty()) {
        CLogger::Log(m_file, m_line, m_options.announceLevel, "%s\n", m_name);
    } else {
        CLogger::Log(m_file, m_line, m_options.announceLevel, "%s", m_options.announcement.c_str());
    }
}

void CallLog::Report(u32 code) const {
    const char* const result = ResultCodeName(code);
    const char* const name = m_options.failureName != nullptr ? m_options.failureName : m_name;
    if (m_options.failureText != nullptr) {
        CLogger::Log(m_file, m_line, m_options.failureLevel, "%s%s\n", m_options.failureText, result);
    } else if (m_options.count != nullptr) {
        CLogger::Log(m_file, m_line, m_options.failureLevel, "Return from %s is :%s%s%d\n", name, result,
                     m_options.countText, static_cast<int>(*m_options.count));
    } else {
        CLogger::Log(m_file, m_line, m_options.failureLevel, "Return from %s is :%s\n", name, result);
    }
}

#include "IpodService/DeviceCall.h"

#include "IpodService/DeviceManagerNames.h"

void CallLog::BeforeCall() const {
    if (!m_options.announcedAfterwards) {
        Announce();
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
    CLogger::LogPlain(m_file, m_line, LogLevel::kWarn, {m_name, " - DEV_MGR_IAP_APP_BUSY\n"});
}

void CallLog::Announce() const {
    if (m_options.announced) {
        CLogger::LogPlain(m_file, m_line, m_options.announceLevel, {m_name, "\n"});
    }
}

void CallLog::Report(u32 code) const {
    const char* const result = ResultCodeName(code);
    const char* const name = m_options.failureName != nullptr ? m_options.failureName : m_name;
    if (m_options.failureText != nullptr) {
        CLogger::LogPlain(m_file, m_line, m_options.failureLevel, {m_options.failureText, result, "\n"});
    } else if (m_options.count != nullptr) {
        CLogger::Log(m_file, m_line, m_options.failureLevel, "Return from %s is :%s%s%d\n", name, result,
                     m_options.countText, static_cast<int>(*m_options.count));
    } else {
        CLogger::LogPlain(m_file, m_line, m_options.failureLevel,
                          {"Return from ", name, " is :", result, "\n"});
    }
}

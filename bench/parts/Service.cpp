#include "bench/parts/Service.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "JsonRpc/RpcMethod.h"
#include "ServiceUtil/Logger.h"

namespace Bench {

Service& Service::Instance() {
    static Service service;
    return service;
}

Service::Log::Log() {
    CLogger::Instance().Open(kLogPath);
    CLogger::Instance().SetLevel(LogLevel::kInfo);
}

Service::Service() {
    using Handler = CIpodRequestHandler;
    const auto add = [this](const char* name, Json::Rpc::RpcMethod<Handler>::Member method) {
        m_server.AddMethod(std::make_unique<Json::Rpc::RpcMethod<Handler>>(m_handler, method, name));
    };
    add("isIpodConnected", &Handler::IsIpodConnected);
    add("getCurrentTrackInfo", &Handler::GetCurrentTrackInfo);
    add("getNextAlphaNumericIndex", &Handler::GetNextAlphaNumericIndex);
    add("getBrowseList", &Handler::GetBrowseList);
    add("getSongList", &Handler::GetSongList);
    while (m_manager.State() != ConnectionState::BrowseReady) {
        m_manager.UpdateConnection();
    }
}

void Service::EnterSongs() {
    m_manager.ResetDatabase();
    m_manager.BrowseTopCategory(DEV_MGR_CATEGORY_TRACK);
}

void EmptyLog() {
    if (truncate(kLogPath, 0) != 0) {
        std::perror(kLogPath);
    }
}

}  // namespace Bench

// Where a service listens.
#pragma once

#include <cstdint>
#include <string>

namespace IpodControl {

struct Endpoint {
    std::string host = "127.0.0.1";  ///< a name or an address
    std::uint16_t port = 8883;
};

inline std::string ToText(const Endpoint& endpoint) {
    const bool isSixth = endpoint.host.find(':') != std::string::npos;
    return (isSixth ? '[' + endpoint.host + ']' : endpoint.host) + ':' + std::to_string(endpoint.port);
}

}  // namespace IpodControl

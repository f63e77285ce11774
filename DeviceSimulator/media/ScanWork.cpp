#include "DeviceSimulator/media/ScanWork.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <span>
#include <string>

#include "DeviceSimulator/media/CoverChoice.h"
#include "DeviceSimulator/media/MusicTags.h"
#include "ServiceUtil/LocalSocket.h"

namespace DeviceSimulator {

namespace {

bool Receive(int socket, void* into, std::size_t size) {
    ssize_t got = 0;
    while ((got = recv(socket, into, size, MSG_WAITALL)) < 0 && errno == EINTR) {
    }
    return got == static_cast<ssize_t>(size);
}

bool SendMessage(int socket, const std::string& payload) {
    std::string message;
    message.reserve(sizeof(std::uint32_t) + payload.size());
    Packer packer(message);
    packer(std::string_view(payload));
    return SendAll(socket, std::as_bytes(std::span(message)));
}

}  // namespace

int Scan(int socket) {
    CoverChoice covers;
    bool isThere = SendMessage(socket, {});
    std::uint32_t size = 0;
    while (isThere && Receive(socket, &size, sizeof size) && size <= kMostScanAnswer) {
        std::string path(size, '\0');
        if (!Receive(socket, path.data(), size)) {
            break;
        }
        MusicFile file = ReadMusicFile(path);
        covers.Choose(file.pictures, file.facts);
        std::string answer;
        Packer packer(answer);
        PackScanned(packer, file.facts);
        isThere = SendMessage(socket, answer);
    }
    return 0;
}

}  // namespace DeviceSimulator

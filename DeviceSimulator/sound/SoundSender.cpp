#include "DeviceSimulator/sound/SoundSender.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "DeviceSimulator/music/LibraryText.h"
#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

namespace {

/// So often in a row it is the installation rather than a file: going on would rush through the queue.
constexpr int kMostEnds = 5;

SoundCommand MakeCommand(std::uint64_t device, const Sound& sound) {
    SoundCommand command;
    command.track = {device, sound.track};
    command.position = sound.position;
    command.since = sound.since.time_since_epoch();
    command.rate = sound.rate;
    command.isMoving = sound.isMoving ? 1 : 0;
    return command;
}

}  // namespace

void SoundSender::Tell(std::uint64_t device, const Sound& sound) {
    const std::lock_guard lock(m_mutex);
    if (!m_wakeUp && (sound.file.empty() || !Start())) {
        return;
    }
    m_wanted = {MakeCommand(device, sound), std::string(sound.file)};
    m_wakeUp->Raise();
}

bool SoundSender::Start() {
    const char* const folder = std::getenv("DEVICE_SIMULATOR_AUDIO");
    if (folder == nullptr || *folder == '\0') {
        return false;
    }
    m_folder = folder;
    m_wakeUp.emplace();
    if (!m_wakeUp->IsOpen()) {
        m_wakeUp.reset();
        return false;
    }
    StartThread("simulator-sound", [this] { Run(); }).detach();
    return true;
}

void SoundSender::Run() {
    for (;;) {
        const short answers = m_isUnsent ? POLLIN | POLLOUT : POLLIN;
        std::array<pollfd, 2> ready{{{m_wakeUp->Fd(), POLLIN, 0}, {m_program.Socket(), answers, 0}}};
        const bool isToStart = m_isUnsent && !m_program.IsRunning();
        poll(ready.data(), ready.size(), isToStart ? 0 : -1);
        if (ready[0].revents != 0) {
            m_wakeUp->Clear();
            const std::lock_guard lock(m_mutex);
            m_current = m_wanted;
            m_isUnsent = true;
        }
        if ((ready[1].revents & ~POLLOUT) != 0) {
            Receive();
        }
        if (m_isUnsent && EnsureProgram()) {
            Send();
        }
    }
}

/// Started with the first track to sound, and again with what there is to be told after it has ended.
bool SoundSender::EnsureProgram() {
    if (m_program.IsRunning()) {
        return true;
    }
    m_isUnsent = false;
    if (m_current.file.empty() || m_ends >= kMostEnds) {
        return false;
    }
    const int error = m_program.Start(SOCK_SEQPACKET, {kSoundWork, m_folder});
    if (error != 0 && !std::exchange(m_isMissing, true)) {
        std::fprintf(stderr, "device simulator: no sound, for want of %s: %s\n", MediaProgram::Path().c_str(),
                     std::strerror(error));
    }
    return error == 0;
}

void SoundSender::Send() {
    std::string message(reinterpret_cast<const char*>(&m_current.command), sizeof m_current.command);
    message += m_current.file.substr(0, kMostSoundText);
    const ssize_t sent = send(m_program.Socket(), message.data(), message.size(), MSG_NOSIGNAL);
    m_isUnsent = sent < 0;
    if (sent >= 0) {
        m_sent = m_current;
    } else if (errno != EAGAIN && errno != EINTR && errno != EPIPE && errno != ECONNRESET) {
        ProgramEnded();  // when it has hung up, Receive comes to that behind its last reports
    }
}

void SoundSender::Receive() {
    std::array<char, sizeof(SoundReport) + kMostSoundText> message;
    const ssize_t size = recv(m_program.Socket(), message.data(), message.size(), 0);
    if (size >= static_cast<ssize_t>(sizeof(SoundReport))) {
        SoundReport report;
        std::memcpy(&report, message.data(), sizeof report);
        const std::string failure(message.data() + sizeof report,
                                  static_cast<std::size_t>(size) - sizeof report);
        if (failure.empty()) {
            m_ends = 0;
        } else if (report.track == m_current.command.track) {  // it may have gone on to another one by itself
            PassOver(failure);
        }
    } else if (size >= 0 || (errno != EAGAIN && errno != EINTR)) {
        m_isUnsent = m_isUnsent || (size < 0 && errno == ECONNRESET);  // it has left the last one unread
        ProgramEnded();
    }
}

void SoundSender::ProgramEnded() {
    const std::string end =
        "the media program has ended (" + MediaProgram::DescribeEnd(m_program.End()) + ")";
    // What it has been told of meanwhile has not brought it down.
    const bool isOfItsTrack = !m_isUnsent && !m_sent.file.empty() && m_sent.command.isMoving != 0;
    if (++m_ends >= kMostEnds) {
        std::fprintf(stderr, "device simulator: no sound from now on: %s %d times without a sound\n",
                     end.c_str(), m_ends);
    } else if (isOfItsTrack) {
        PassOver(end);
    } else {
        std::fprintf(stderr, "device simulator: %s\n", end.c_str());
    }
}

void SoundSender::PassOver(const std::string& reason) {
    if (m_named.insert(m_current.file).second) {
        std::fprintf(stderr, "device simulator: cannot play %s: %s\n", CleanName(m_current.file).c_str(),
                     reason.c_str());
    }
    m_onFailure(m_current.command.track);
}

}  // namespace DeviceSimulator

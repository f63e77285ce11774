#include "DeviceSimulator/run/EventLoop.h"

#include <algorithm>

#include "DeviceSimulator/sound/SoundPresence.h"
#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

namespace {

/// One at a time: of those that are open the first that plays, else the first that may go on.
const Device* FindSounding(const ManagerModel& model) {
    const Device* standing = nullptr;
    for (const auto& device : model.Devices()) {
        const DevMgrPlayState state = device->player.State();
        if (device->openings.empty() || state == E_DEVMGR_IPOD_PLAY_STOPPED) {
            continue;
        }
        if (state == E_DEVMGR_IPOD_PLAY_PLAYING) {
            return device.get();
        }
        standing = standing != nullptr ? standing : device.get();
    }
    return standing;
}

}  // namespace

EventLoop::EventLoop() : m_sound([this](const SoundTrack& track) { PassOver(track); }) {}

void EventLoop::Reset(SimulatorOptions options, Clock clock) {
    std::unique_lock lock(m_mutex);
    m_model.Reset(std::move(options));
    FollowSound();
    m_clock = std::move(clock);
    m_deliveredCount = m_model.LastSequence();
    WaitWhileRunning(lock, m_runningProcess);
    m_changed.notify_all();
    m_delivered.notify_all();
}

DevMgrResult EventLoop::Deregister(std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    const TimePoint now = Now();
    const DevMgrResult result = m_model.Deregister(process, now);
    Settle(now);
    if (result == DEV_MGR_SUCCESS) {
        WaitWhileRunning(lock, process);
    }
    return result;
}

void EventLoop::Drain() {
    std::unique_lock lock(m_mutex);
    Settle(Now());
    m_delivered.wait(lock, [this, target = m_model.LastSequence()] { return m_deliveredCount >= target; });
}

void EventLoop::ClockMoved() {
    const std::lock_guard lock(m_mutex);
    Settle(Now());
}

/// Collects what has happened and wakes the thread, but only when there is something new for it: a call that
/// changes nothing wakes nobody.
void EventLoop::Settle(TimePoint now) {
    m_model.Advance(now);
    FollowSound();
    const auto due = m_model.NextDue();
    const bool isNeeded =
        m_model.HasPending() || (due && *due <= now) || (due && (!m_sleepsUntil || *due < *m_sleepsUntil));
    if (!isNeeded) {
        return;
    }
    if (!m_thread.joinable()) {
        m_thread = StartThread("devmgr-events", [this] { Run(); });
    } else if (m_isSleeping) {
        m_isSleeping = false;
        m_changed.notify_one();
    }
}

void EventLoop::FollowSound() {
    const Device* const device = FindSounding(m_model);
    const Sounding sounding =
        device != nullptr ? Sounding{device->instance, device->player.SoundChanges()} : Sounding{};
    if (device != nullptr && device->player.State() == E_DEVMGR_IPOD_PLAY_PLAYING) {
        // Another player may have told of its own, and the stream would run at that one.
        m_model.TellSampleRate(*device);
    }
    if (sounding == m_sounding) {
        return;
    }
    m_sounding = sounding;
    m_sound.Tell(sounding.instance, device != nullptr ? device->player.CurrentSound() : Sound{});
}

void EventLoop::PassOver(const SoundTrack& track) {
    Locked([&](ManagerModel& model, TimePoint now) {
        for (const auto& device : model.Devices()) {
            if (device->instance == track.device && device->player.CurrentSound().track == track.number) {
                device->player.PassOver(now);
            }
        }
    });
}

void EventLoop::Run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_model.Advance(Now());
        FollowSound();
        if (m_model.HasPending()) {
            Deliver(lock, m_model.TakePending());
            continue;
        }
        const auto until = m_sleepsUntil = m_model.NextDue();
        m_isSleeping = true;
        if (until && !m_clock) {
            m_changed.wait_until(lock, *until);
        } else {
            m_changed.wait(lock);
        }
        m_isSleeping = false;
    }
}

void EventLoop::Deliver(std::unique_lock<std::mutex>& lock, const PendingEvent& pending) {
    if (pending.instance != 0 && pending.event.words[0] == DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE) {
        // Whoever hears of the new rate opens the device again at once, and has to find it there.
        lock.unlock();
        SetCaptureRate(pending.event.words[1]);
        lock.lock();
    }
    for (const std::uint32_t process : m_model.Targets(pending)) {
        // A callback before this one may have deregistered it.
        const auto listener = m_model.Processes().Listener(process);
        if (listener == nullptr) {
            continue;
        }
        m_runningProcess = process;
        lock.unlock();
        listener->OnEvent(pending.event, process);
        lock.lock();
        m_runningProcess = 0;
        m_delivered.notify_all();
    }
    m_deliveredCount = std::max(m_deliveredCount, pending.sequence);
    m_delivered.notify_all();
}

void EventLoop::WaitWhileRunning(std::unique_lock<std::mutex>& lock, std::uint32_t process) {
    if (process == 0 || m_thread.get_id() == std::this_thread::get_id()) {
        return;
    }
    m_delivered.wait(lock, [&] { return m_runningProcess != process; });
}

}  // namespace DeviceSimulator

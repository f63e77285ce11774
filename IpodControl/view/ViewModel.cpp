#include "IpodControl/view/ViewModel.h"

#include <algorithm>
#include <utility>

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::seconds kTick(1);

void Earlier(std::optional<Time>& wake, std::optional<Time> other) {
    if (other) {
        wake = std::min(wake.value_or(*other), *other);
    }
}

}  // namespace

void ViewModel::SetTime(Time now) {
    m_context.now = now;
    if (!m_context.notice.text.empty() && now >= m_context.notice.until) {
        m_context.notice = {};
    }
    m_nowPlaying.Tick();
    m_browser.Tick();
}

std::optional<Time> ViewModel::NextWake() const {
    std::optional<Time> wake;
    if (!m_context.notice.text.empty()) {
        wake = m_context.notice.until;
    }
    if (m_context.calls.WaitingSince()) {
        Earlier(wake, m_context.now + kTick);
    }
    Earlier(wake, m_nowPlaying.NextWake());
    Earlier(wake, m_browser.NextWake());
    return wake;
}

void ViewModel::Connected() {
    m_why.clear();
    m_link = Link::NoPlayer;
    m_context.notice = {};
    AskForPlayer();
}

void ViewModel::Disconnected(std::string why) {
    m_link = Link::NoService;
    m_why = std::move(why);
    m_context.calls.Clear();
    m_context.notice = {};
    m_nowPlaying.Stop(false);
    m_browser.Stop();
    m_isTyping = false;
}

void ViewModel::Leave() {
    m_nowPlaying.EndSeek();
    m_browser.Leave();
}

void ViewModel::Take(const Message& message) {
    if (message.IsNotification()) {
        TakeNotification(message.Method(), message.Params());
    } else {
        m_context.calls.Take(message);
    }
}

void ViewModel::TakeNotification(const std::string& method, const Json::Value& params) {
    if (method != "ipodConnectionNotification") {
        m_nowPlaying.Take(method, params);
        return;
    }
    // With a stick plugged in it comes again and again, and no player is there.
    if (!FlagMember(params, "connected").value_or(false)) {
        SetPlayer(false);
    } else if (m_link == Link::NoPlayer) {
        AskForPlayer();
    }
}

void ViewModel::AskForPlayer() {
    m_context.Ask("isIpodConnected", {}, [this](const Reply& reply) {
        SetPlayer(FlagMember(reply.result, "connected").value_or(false));
    });
}

void ViewModel::SetPlayer(bool isThere) {
    const Link link = isThere ? Link::Player : Link::NoPlayer;
    if (m_link == Link::NoService || std::exchange(m_link, link) == link) {
        return;
    }
    if (isThere) {
        m_nowPlaying.Start();
        m_browser.Start();
    } else {
        m_nowPlaying.Stop(true);
        m_browser.Stop();
        m_isTyping = false;
    }
}

std::chrono::seconds ViewModel::Waiting() const {
    const auto since = m_context.calls.WaitingSince();
    return std::chrono::duration_cast<std::chrono::seconds>(m_context.now - since.value_or(m_context.now));
}

std::string ViewModel::Status() const {
    const auto waiting = Waiting().count();
    if (waiting >= 1) {
        return "The service has not answered for " + std::to_string(waiting) + " s";
    }
    return m_context.notice.text;
}

}  // namespace IpodControl::PlayerView

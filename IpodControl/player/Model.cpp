#include "IpodControl/player/Model.h"

#include <algorithm>
#include <utility>

#include "IpodControl/player/Fields.h"

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::seconds kTick(1);

void Earlier(std::optional<Time>& wake, std::optional<Time> other) {
    if (other) {
        wake = std::min(wake.value_or(*other), *other);
    }
}

}  // namespace

void Model::SetTime(Time now) {
    m_session.now = now;
    if (!m_session.notice.text.empty() && now >= m_session.notice.until) {
        m_session.notice = {};
    }
    m_playback.Tick();
    m_browser.Tick();
}

std::optional<Time> Model::NextWake() const {
    std::optional<Time> wake;
    if (!m_session.notice.text.empty()) {
        wake = m_session.notice.until;
    }
    if (m_session.calls.WaitingSince()) {
        Earlier(wake, m_session.now + kTick);
    }
    Earlier(wake, m_playback.NextWake());
    Earlier(wake, m_browser.NextWake());
    return wake;
}

void Model::Connected() {
    m_why.clear();
    m_link = Link::NoPlayer;
    m_session.notice = {};
    AskForPlayer();
}

void Model::Disconnected(std::string why) {
    m_link = Link::NoService;
    m_why = std::move(why);
    m_session.calls.Clear();
    m_session.notice = {};
    m_playback.Stop(false);
    m_browser.Stop();
    m_isTyping = false;
}

void Model::Take(const Message& message) {
    if (message.IsNotification()) {
        TakeNotification(message.Method(), message.Params());
    } else {
        m_session.calls.Take(message);
    }
}

void Model::TakeNotification(const std::string& method, const Json::Value& params) {
    if (method != "ipodConnectionNotification") {
        m_playback.Take(method, params);
        return;
    }
    // With a stick plugged in it comes again and again, and no player is there.
    if (!FlagIn(params, "connected").value_or(false)) {
        SetPlayer(false);
    } else if (m_link == Link::NoPlayer) {
        AskForPlayer();
    }
}

void Model::AskForPlayer() {
    m_session.Ask("isIpodConnected", {}, [this](const Reply& reply) {
        SetPlayer(FlagIn(reply.result, "connected").value_or(false));
    });
}

void Model::SetPlayer(bool isThere) {
    const Link link = isThere ? Link::Player : Link::NoPlayer;
    if (m_link == Link::NoService || std::exchange(m_link, link) == link) {
        return;
    }
    if (isThere) {
        m_playback.Start();
        m_browser.Start();
    } else {
        m_playback.Stop(true);
        m_browser.Stop();
        m_isTyping = false;
    }
}

std::chrono::seconds Model::Waiting() const {
    const auto since = m_session.calls.WaitingSince();
    return std::chrono::duration_cast<std::chrono::seconds>(m_session.now - since.value_or(m_session.now));
}

std::string Model::Status() const {
    const auto waiting = Waiting().count();
    if (waiting >= 1) {
        return "The service has not answered for " + std::to_string(waiting) + " s";
    }
    return m_session.notice.text;
}

}  // namespace IpodControl::PlayerView

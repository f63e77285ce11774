#include "IpodControl/view/ViewModel.h"

#include <algorithm>
#include <utility>

#include "IpodControl/DisplayText.h"
#include "ServiceUtil/Utf8.h"

namespace IpodControl::PlayerView {

void ViewModel::SetTime(Time now) {
    m_context.now = now;
    if (now >= m_context.notice.until) {
        m_context.notice = {};
    }
    m_nowPlaying.Tick();
    m_browser.Tick();
}

std::optional<Time> ViewModel::NextWake() const {
    constexpr std::chrono::seconds kTick(1);
    std::optional<Time> wake;
    const auto earlier = [&wake](std::optional<Time> other) {
        if (other) {
            wake = std::min(wake.value_or(*other), *other);
        }
    };
    if (!m_context.notice.text.empty()) {
        earlier(m_context.notice.until);
    }
    if (m_context.WaitingSince()) {
        earlier(m_context.now + kTick);
    }
    earlier(m_nowPlaying.NextWake());
    earlier(m_browser.NextWake());
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
    m_context.Clear();
    StopParts(false);
}

void ViewModel::Leave() {
    m_nowPlaying.EndSeek();
    m_browser.Leave();
}

void ViewModel::Take(const Message& message) {
    if (!message.IsNotification()) {
        m_context.Take(message);
    } else if (message.Method() != "ipodConnectionNotification") {
        m_nowPlaying.Take(message.Method(), message.Params());
    } else if (!IsTrueMember(message.Params(), "connected")) {
        SetPlayer(false);
    } else if (m_link == Link::NoPlayer) {
        // With a stick plugged in it comes again and again, and no player is there.
        AskForPlayer();
    }
}

void ViewModel::AskForPlayer() {
    m_context.Ask({"isIpodConnected"},
                  [this](const Reply& reply) { SetPlayer(IsTrueMember(reply.result, "connected")); });
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
        StopParts(true);
    }
}

void ViewModel::StopParts(bool hasService) {
    m_nowPlaying.Stop(hasService);
    m_browser.Stop();
    m_isTyping = false;
}

std::string ViewModel::Status() const {
    const Time since = m_context.WaitingSince().value_or(m_context.now);
    const auto waiting = std::chrono::duration_cast<std::chrono::seconds>(m_context.now - since).count();
    return waiting >= 1 ? "The service has not answered for " + std::to_string(waiting) + " s"
                        : m_context.notice.text;
}

std::span<const ViewModel::Binding> ViewModel::Bindings() {
    static const Binding kBindings[] = {
        {"q", "quit", U"q", false, [](ViewModel& model, char32_t) { model.m_wantsToQuit = true; }},
        {"space", "play, pause", U" ", true,
         [](ViewModel& model, char32_t) { model.m_nowPlaying.PlayPause(); }},
        {"n  p", "next, previous track", U"np", true,
         [](ViewModel& model, char32_t key) { model.m_nowPlaying.Skip(key == U'n'); }},
        {"Enter",
         "open or play the item",
         {kEnter},
         false,
         [](ViewModel& model, char32_t) { model.m_browser.Enter(); }},
        {"Left Backspace",
         "go up",
         {kLeft, kBackspace},
         false,
         [](ViewModel& model, char32_t) {
             model.m_isTyping = false;
             model.m_browser.Back();
         }},
        {"Up Down PgUp PgDn",
         "move in the list",
         {kUp, kDown, kPageUp, kPageDown},
         false,
         [](ViewModel& model, char32_t key) {
             const int distance = key == kUp || key == kDown ? 1 : model.m_browser.Rows();
             model.m_browser.Move(key == kUp || key == kPageUp ? -distance : distance);
         }},
        {"/",
         "type to filter; Esc ends",
         {U'/', kEscape},
         false,
         [](ViewModel& model, char32_t key) {
             model.m_isTyping = key == U'/' && model.m_browser.IsKnown();
             if (key == kEscape) {
                 model.m_browser.Filter("");
             }
         }},
        {".  ,", "hold: seek forward, back", U".,", true,
         [](ViewModel& model, char32_t key) { model.m_nowPlaying.Seek(key == U'.'); }},
        {"s", "shuffle on, off", U"s", true,
         [](ViewModel& model, char32_t) { model.m_nowPlaying.ToggleShuffle(); }},
        {"r", "repeat off, one, all", U"r", true,
         [](ViewModel& model, char32_t) { model.m_nowPlaying.NextRepeat(); }},
        {"a", "sound on, off", U"a", true,
         [](ViewModel& model, char32_t) { model.m_nowPlaying.ToggleStream(); }},
        {"Right",
         "open the item",
         {kRight},
         false,
         [](ViewModel& model, char32_t) {
             model.m_isTyping = false;
             model.m_browser.EnterDeeper();
         }},
        {"Home End",
         "first, last item",
         {kHome, kEnd},
         false,
         [](ViewModel& model, char32_t key) {
             model.m_browser.MoveTo(key == kHome ? 0 : model.m_browser.Total());
         }},
        {"]  [", "next, previous letter", U"][", false,
         [](ViewModel& model, char32_t key) { model.m_browser.Jump(key == U']'); }},
        {"Ctrl-L",
         "read and draw again",
         {kRedraw},
         false,
         [](ViewModel& model, char32_t) { model.m_browser.Reread(); }},
    };
    return kBindings;
}

void ViewModel::Press(char32_t key) {
    if (std::exchange(m_showsHelp, false) || (m_isTyping && Type(key))) {
        return;
    }
    if (key == U'?') {
        m_showsHelp = true;
        return;
    }
    const auto bindings = Bindings();
    const auto binding = std::find_if(bindings.begin(), bindings.end(), [key](const Binding& each) {
        return each.keys.find(key) != std::u32string::npos;
    });
    if (binding == bindings.end()) {
        m_context.Refuse("This key does nothing: ? shows those that do");
    } else if (binding->needsPlayer && m_link != Link::Player) {
        m_context.Refuse(m_link == Link::NoPlayer ? "No player is connected" : "There is no service");
    } else {
        binding->act(*this, key);
    }
}

bool ViewModel::Type(char32_t key) {
    // Longer than the names that a player holds.
    constexpr std::size_t kLongest = 64;
    std::string filter = m_browser.FilterText();
    if (key == kEnter) {
        m_isTyping = false;
        if (m_browser.IsRoot()) {
            m_browser.Filter("");
        }
    } else if (key == kBackspace && filter.empty()) {
        m_isTyping = false;
    } else if (key == kBackspace) {
        m_browser.Filter(std::string(CutUtf8(filter, filter.size() - 1)));
    } else if (key >= kEnter) {
        return false;
    } else if (filter.size() < kLongest && IsHarmless(key)) {
        AppendUtf8(filter, key);
        m_browser.Filter(std::move(filter));
    }
    return true;
}

}  // namespace IpodControl::PlayerView

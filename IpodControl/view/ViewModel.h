// What the view shows, and what keys, messages and time do to it. No terminal and no connection in here.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "IpodControl/view/Browser.h"
#include "IpodControl/view/NowPlaying.h"
#include "IpodControl/view/ViewContext.h"

namespace IpodControl::PlayerView {

enum class Link { NoService, NoPlayer, Player };

/// What is pressed: a character, as itself, or one of these, which lie behind all characters.
enum Key : char32_t {
    kEnter = 0x110000,
    kEscape,
    kBackspace,
    kLeft,
    kRight,
    kUp,
    kDown,
    kPageUp,
    kPageDown,
    kHome,
    kEnd,
    kRedraw,
};

class ViewModel {
  public:
    ViewModel() = default;
    ViewModel(const ViewModel&) = delete;
    ViewModel& operator=(const ViewModel&) = delete;

    /// Before every other call of a moment.
    void SetTime(Time now);
    /// When SetTime has something to do; none when only a key or a message can change something.
    std::optional<Time> NextWake() const;

    void Connected();
    /// `why` is a sentence.
    void Disconnected(std::string why);
    void Take(const Message& message);
    /// A character or a Key.
    void Press(char32_t key);
    /// Leaves nothing behind at the player and the service that only the view wants.
    void Leave();

    /// Requests to send.
    std::vector<std::string> TakeLines() { return m_context.TakeLines(); }

    /// Keys that belong together, and what they do.
    struct Binding {
        const char* shown;
        const char* meaning;
        std::u32string keys;
        bool needsPlayer;
        void (*act)(ViewModel& model, char32_t key);
    };
    /// The most important ones first; the one that shows them is not among them.
    static std::span<const Binding> Bindings();

    bool WantsToQuit() const { return m_wantsToQuit; }
    bool ShowsHelp() const { return m_showsHelp; }
    bool IsTyping() const { return m_isTyping; }
    Link State() const { return m_link; }
    const std::string& WhyNoService() const { return m_why; }
    /// The status line's text: a notice, or how long the service has not answered for.
    std::string Status() const;
    bool IsRefusal() const { return m_context.notice.isRefusal; }
    const NowPlaying& Player() const { return m_nowPlaying; }
    const Browser& List() const { return m_browser; }
    void SetListRows(int rows) { m_browser.SetRows(rows); }

  private:
    void AskForPlayer();
    void SetPlayer(bool isThere);
    void StopParts(bool hasService);
    /// Whether the key was one of the filter line's.
    bool Type(char32_t key);

    ViewContext m_context;
    NowPlaying m_nowPlaying{m_context};
    Browser m_browser{m_context};
    Link m_link = Link::NoService;
    std::string m_why = "Connecting";
    bool m_wantsToQuit = false;
    bool m_showsHelp = false;
    bool m_isTyping = false;
};

}  // namespace IpodControl::PlayerView

// What the view shows, and what keys, messages and time do to it. No terminal and no connection in here.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "IpodControl/view/Browser.h"
#include "IpodControl/view/Key.h"
#include "IpodControl/view/NowPlaying.h"
#include "IpodControl/view/ViewContext.h"

namespace IpodControl::PlayerView {

enum class Link { NoService, NoPlayer, Player };

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
    void Press(const Key& key);
    /// Leaves nothing behind at the player and the service that only the view wants.
    void Leave();

    /// Requests to send.
    std::vector<std::string> TakeLines() { return m_context.calls.TakeLines(); }

    bool WantsToQuit() const { return m_wantsToQuit; }
    bool ShowsHelp() const { return m_showsHelp; }
    bool IsTyping() const { return m_isTyping; }
    Link State() const { return m_link; }
    const std::string& WhyNoService() const { return m_why; }
    /// The status line's text: a notice, or how long the service has not answered for.
    std::string Status() const;
    bool IsRefusal() const { return m_context.notice.isRefusal; }
    const NowPlaying& Playing() const { return m_nowPlaying; }
    const Browser& List() const { return m_browser; }
    void SetListRows(int rows) { m_browser.SetRows(rows); }

  private:
    void TakeNotification(const std::string& method, const Json::Value& params);
    void AskForPlayer();
    void SetPlayer(bool isThere);
    void PressCharacter(char32_t character);
    void PressControl(char32_t character);
    void PressMove(const Key& key);
    /// Whether the key was one of the filter line's.
    bool Type(const Key& key);
    void EndFilter();
    std::chrono::seconds Waiting() const;

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

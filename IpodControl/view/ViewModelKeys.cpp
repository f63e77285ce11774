// What each key does.
#include <string>

#include "IpodControl/DisplayText.h"
#include "IpodControl/view/ViewModel.h"
#include "ServiceUtil/Utf8.h"

namespace IpodControl::PlayerView {

namespace {

/// Longer than the names that a player holds.
constexpr std::size_t kLongestFilter = 64;

std::string WithoutLast(std::string text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80) {
        text.pop_back();
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

}  // namespace

void ViewModel::Press(const Key& key) {
    if (m_showsHelp) {
        m_showsHelp = false;
        return;
    }
    if (m_isTyping && Type(key)) {
        return;
    }
    if (key.kind == KeyKind::Character) {
        PressCharacter(key.character);
    } else {
        PressMove(key);
    }
}

bool ViewModel::Type(const Key& key) {
    const std::string& filter = m_browser.FilterText();
    switch (key.kind) {
        case KeyKind::Character:
            if (filter.size() < kLongestFilter && IsHarmless(key.character)) {
                std::string longer = filter;
                AppendUtf8(longer, key.character);
                m_browser.Filter(longer);
            }
            return true;
        case KeyKind::Backspace:
            if (filter.empty()) {
                m_isTyping = false;
            } else {
                m_browser.Filter(WithoutLast(filter));
            }
            return true;
        case KeyKind::Enter:
            m_isTyping = false;
            if (m_browser.IsRoot()) {
                m_browser.Filter("");
            }
            return true;
        default:
            return false;
    }
}

void ViewModel::EndFilter() {
    m_isTyping = false;
    m_browser.Filter("");
}

void ViewModel::PressCharacter(char32_t character) {
    switch (character) {
        case U'q':
            m_wantsToQuit = true;
            break;
        case U'?':
            m_showsHelp = true;
            break;
        case U'/':
            m_isTyping = m_browser.IsKnown();
            break;
        case U'[':
        case U']':
            m_browser.Jump(character == U']');
            break;
        default:
            PressControl(character);
    }
}

void ViewModel::PressControl(char32_t character) {
    constexpr std::u32string_view kKeys = U" np,.sra";
    if (kKeys.find(character) == std::u32string_view::npos) {
        m_context.Refuse("This key does nothing: ? shows those that do");
        return;
    }
    if (m_link != Link::Player) {
        m_context.Refuse(m_link == Link::NoPlayer ? "No player is connected" : "There is no service");
        return;
    }
    switch (character) {
        case U' ':
            return m_nowPlaying.PlayPause();
        case U's':
            return m_nowPlaying.ToggleShuffle();
        case U'r':
            return m_nowPlaying.NextRepeat();
        case U'a':
            return m_nowPlaying.ToggleStream();
        case U'n':
        case U'p':
            return m_nowPlaying.Skip(character == U'n');
        default:
            return m_nowPlaying.Seek(character == U'.');
    }
}

void ViewModel::PressMove(const Key& key) {
    switch (key.kind) {
        case KeyKind::Up:
            return m_browser.Move(-1);
        case KeyKind::Down:
            return m_browser.Move(1);
        case KeyKind::PageUp:
            return m_browser.Move(-m_browser.Rows());
        case KeyKind::PageDown:
            return m_browser.Move(m_browser.Rows());
        case KeyKind::Home:
            return m_browser.MoveTo(0);
        case KeyKind::End:
            return m_browser.MoveTo(m_browser.Total());
        case KeyKind::Enter:
            return m_browser.Enter();
        case KeyKind::Right:
            m_isTyping = false;
            return m_browser.EnterDeeper();
        case KeyKind::Left:
        case KeyKind::Backspace:
            m_isTyping = false;
            return m_browser.Back();
        case KeyKind::Escape:
            return EndFilter();
        default:
            return m_browser.Reread();
    }
}

}  // namespace IpodControl::PlayerView

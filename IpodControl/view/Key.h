// A key press.
#pragma once

namespace IpodControl::PlayerView {

enum class KeyKind {
    Character,
    Enter,
    Escape,
    Backspace,
    Left,
    Right,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
    Redraw,
};

struct Key {
    KeyKind kind = KeyKind::Character;
    char32_t character = 0;  ///< of KeyKind::Character
};

}  // namespace IpodControl::PlayerView

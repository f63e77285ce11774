// The terminal, through ncurses.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "IpodControl/view/Canvas.h"
#include "IpodControl/view/ViewModel.h"

struct screen;  // ncurses's own

namespace IpodControl::PlayerView {

/// At most one at a time: it holds standard input and output. Leaves them as they were.
class Terminal {
  public:
    /// Null, with a sentence in `why`, where standard input or output is no terminal or one that cannot be
    /// drawn on. Sets the process's locale.
    static std::unique_ptr<Terminal> Open(bool wantsColours, std::string& why);

    Size Extent() const;
    Charset Characters() const { return m_charset; }
    /// 0, 8 or 256
    int Colours() const { return m_colours; }

    /// Takes the window's new size.
    void Resize();
    /// Draws everything again at the next Show.
    void Redraw();
    /// Puts what has changed on the screen.
    void Show(const Canvas& canvas);
    /// What has been typed, as ViewModel::Press takes it; does not wait.
    std::vector<char32_t> ReadKeys();

  private:
    struct CloseScreen {
        void operator()(screen* opened) const;
    };
    using Screen = std::unique_ptr<screen, CloseScreen>;

    Terminal(Screen opened, bool wantsColours);
    void ShowCell(int row, int column, const Cell& cell);

    Screen m_screen;
    Charset m_charset;
    int m_colours = 0;
    std::optional<Canvas> m_shown;
};

}  // namespace IpodControl::PlayerView

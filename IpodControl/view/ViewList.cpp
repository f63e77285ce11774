#include <algorithm>
#include <array>

#include "IpodControl/view/ViewParts.h"

namespace IpodControl::PlayerView {

namespace {

constexpr Style kDim{.isDim = true};
constexpr Style kBold{.isBold = true};
constexpr Style kReverse{.isReverse = true};

std::string Position(const Browser& list) {
    if (!list.IsKnown() || list.Total() == 0) {
        return {};
    }
    return Grouped(list.Cursor() + 1) + " of " + Grouped(list.Total());
}

void DrawHeader(Canvas& canvas, int row, const Browser& list) {
    const int columns = canvas.Extent().columns;
    const std::string position = Position(list);
    const int width = static_cast<int>(position.size());
    canvas.Fill(row, 0, columns, kReverse);
    canvas.Write(row, 1, columns - width - 4, list.Path(), kReverse);
    canvas.Write(row, columns - width - 1, width, position, kReverse);
}

void DrawItem(Canvas& canvas, int row, const Item* item, bool isChosen) {
    const int columns = canvas.Extent().columns;
    Style style;
    style.isReverse = isChosen;
    style.isDim = item == nullptr || !item->isOffered;
    if (isChosen) {
        canvas.Fill(row, 0, columns, style);
        canvas.Put(row, 0, ">", style);
    }
    const bool hasName = item != nullptr && !item->name.empty();
    canvas.Write(row, 2, columns - 2, hasName ? item->name : item == nullptr ? "..." : "(no name)", style);
}

const char* WhyEmpty(const ViewModel& model) {
    switch (model.State()) {
        case Link::NoService:
            return "Waiting for the service";
        case Link::NoPlayer:
            return "No player is connected";
        default:
            break;
    }
    if (!model.List().IsKnown()) {
        return "Reading the list";
    }
    return model.List().FilterText().empty() ? "The list is empty" : "Nothing has that in its name";
}

const char* Word(Link link) {
    constexpr std::array kWords{"no service", "no player", "connected"};
    return kWords[static_cast<std::size_t>(link)];
}

}  // namespace

void DrawList(Canvas& canvas, const Layout& layout, const ViewModel& model) {
    const Browser& list = model.List();
    const int columns = canvas.Extent().columns;
    if (layout.hasHeader) {
        DrawHeader(canvas, layout.nowPlayingRows, list);
    }
    if (layout.hasFilter) {
        const int end = canvas.Write(layout.listRow - 1, 0, columns - 1, "/" + list.FilterText(), kBold);
        if (model.IsTyping()) {
            canvas.Put(layout.listRow - 1, end, " ", kReverse);
        }
    }
    if (!list.IsKnown() || list.Total() == 0) {
        canvas.Write(layout.listRow, 2, columns - 2, WhyEmpty(model), kDim);
        return;
    }
    for (int row = 0; row < layout.listRows && list.Top() + row < list.Total(); ++row) {
        const std::int64_t index = list.Top() + row;
        DrawItem(canvas, layout.listRow + row, list.At(index), index == list.Cursor());
    }
}

void DrawStatus(Canvas& canvas, const ViewModel& model, const Look& look) {
    const int columns = canvas.Extent().columns;
    const int row = canvas.Extent().rows - 1;
    std::string right = Word(model.State());
    if (columns >= 70) {
        right += " " + look.endpoint;
    }
    const std::string status = model.Status();
    const std::string left = !status.empty()                    ? status
                             : model.State() == Link::NoService ? model.WhyNoService()
                                                                : "? help   q quit";
    // What is said now matters more than what is always there.
    const int needed = Columns(Glyphs(left, canvas.Characters()));
    const int width = static_cast<int>(right.size());
    const bool hasRoom = needed + 2 + width <= columns;
    canvas.Write(row, 0, columns, left,
                 {.isBold = !status.empty() && model.IsRefusal(), .isDim = status.empty()});
    if (hasRoom) {
        canvas.Write(row, columns - width, width, right, kDim);
    }
}

void DrawHelp(Canvas& canvas) {
    // What does not fit into a small window is left out from the end.
    constexpr std::array<std::array<const char*, 2>, 15> kKeys{{
        {"q", "quit"},
        {"space", "play, pause"},
        {"n  p", "next, previous track"},
        {"Enter", "open or play the item"},
        {"Left Backspace", "go up"},
        {"Up Down PgUp PgDn", "move in the list"},
        {"/", "type to filter; Esc ends"},
        {".  ,", "hold: seek forward, back"},
        {"s", "shuffle on, off"},
        {"r", "repeat off, one, all"},
        {"a", "sound on, off"},
        {"Right", "open the item"},
        {"Home End", "first, last item"},
        {"]  [", "next, previous letter"},
        {"Ctrl-L", "read and draw again"},
    }};
    constexpr int kWidth = 46;
    const int columns = std::min(canvas.Extent().columns, kWidth);
    const int left = (canvas.Extent().columns - columns) / 2;
    const int rows = std::min(static_cast<int>(kKeys.size()) + 2, canvas.Extent().rows);
    const int top = (canvas.Extent().rows - rows) / 2;
    for (int i = 0; i < rows; ++i) {
        canvas.Fill(top + i, left, columns, kReverse);
        if (i >= 1 && i + 1 < rows) {
            const auto& key = kKeys[static_cast<std::size_t>(i - 1)];
            canvas.Write(top + i, left + 1, 18, key[0], kReverse);
            canvas.Write(top + i, left + 20, columns - 20, key[1], kReverse);
        }
    }
}

}  // namespace IpodControl::PlayerView

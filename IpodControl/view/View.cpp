#include "IpodControl/view/View.h"

#include <algorithm>
#include <array>

#include "IpodControl/DisplayText.h"

namespace IpodControl::PlayerView {

namespace {

constexpr Style kDim{.isDim = true};
constexpr Style kBold{.isBold = true};
constexpr Style kReverse{.isReverse = true};

struct Layout {
    bool isFull = false;  ///< room for the cover, and for each text of the track on a line of its own
    int nowPlayingRows = 0;
    bool hasHeader = false;
    bool hasFilter = false;
    int listRow = 0;
    int listRows = 0;
};

Layout LayOut(Size size, const ViewModel& model) {
    Layout layout;
    layout.isFull = size.rows >= 14 && size.columns >= 40;
    layout.nowPlayingRows = layout.isFull ? std::clamp(size.rows * 2 / 5, 6, 14) : 2;
    layout.hasHeader = size.rows >= 6;
    layout.hasFilter = model.IsTyping() || !model.List().FilterText().empty();
    layout.listRow = layout.nowPlayingRows + (layout.hasHeader ? 1 : 0) + (layout.hasFilter ? 1 : 0);
    layout.listRows = std::max(size.rows - 1 - layout.listRow, 1);
    return layout;
}

void DrawHeader(Canvas& canvas, int row, const Browser& list) {
    const int columns = canvas.Extent().columns;
    const bool hasItems = list.IsKnown() && list.Total() > 0;
    const std::string position =
        hasItems ? Grouped(list.Cursor() + 1) + " of " + Grouped(list.Total()) : std::string();
    const int width = static_cast<int>(position.size());
    canvas.Fill(row, 0, columns, kReverse);
    canvas.Write(row, 1, columns - width - 4, list.Path(), kReverse);
    canvas.Write(row, columns - width - 1, width, position, kReverse);
}

void DrawItem(Canvas& canvas, int row, const Item* item, bool isChosen) {
    const int columns = canvas.Extent().columns;
    const Style style{.isDim = item == nullptr || !item->isOffered, .isReverse = isChosen};
    if (isChosen) {
        canvas.Fill(row, 0, columns, style);
        canvas.Put(row, 0, ">", style);
    }
    const bool hasName = item != nullptr && !item->name.empty();
    canvas.Write(row, 2, columns - 2, hasName ? item->name : item == nullptr ? "..." : "(no name)", style);
}

const char* WhyEmpty(const ViewModel& model) {
    if (model.State() == Link::NoService) {
        return "Waiting for the service";
    }
    if (model.State() == Link::NoPlayer) {
        return "No player is connected";
    }
    if (!model.List().IsKnown()) {
        return "Reading the list";
    }
    return model.List().FilterText().empty() ? "The list is empty" : "Nothing has that in its name";
}

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
    constexpr std::array kLinks{"no service", "no player", "connected"};
    const int columns = canvas.Extent().columns;
    const int row = canvas.Extent().rows - 1;
    std::string right = kLinks[static_cast<std::size_t>(model.State())];
    if (columns >= 70) {
        right += " " + look.endpoint;
    }
    const std::string status = model.Status();
    const std::string left = !status.empty()                    ? status
                             : model.State() == Link::NoService ? model.WhyNoService()
                                                                : "? help   q quit";
    canvas.Write(row, 0, columns, left,
                 {.isBold = !status.empty() && model.IsRefusal(), .isDim = status.empty()});
    // What is said now matters more than what is always there.
    const int width = static_cast<int>(right.size());
    if (canvas.Columns(left) + 2 + width <= columns) {
        canvas.Write(row, columns - width, width, right, kDim);
    }
}

/// What does not fit into a small window is left out from the end.
void DrawHelp(Canvas& canvas) {
    constexpr int kWidth = 46;
    const auto keys = ViewModel::Bindings();
    const int columns = std::min(canvas.Extent().columns, kWidth);
    const int left = (canvas.Extent().columns - columns) / 2;
    const int rows = std::min(static_cast<int>(keys.size()) + 2, canvas.Extent().rows);
    const int top = (canvas.Extent().rows - rows) / 2;
    for (int i = 0; i < rows; ++i) {
        canvas.Fill(top + i, left, columns, kReverse);
        if (i >= 1 && i + 1 < rows) {
            const auto& key = keys[static_cast<std::size_t>(i - 1)];
            canvas.Write(top + i, left + 1, 18, key.shown, kReverse);
            canvas.Write(top + i, left + 20, columns - 20, key.meaning, kReverse);
        }
    }
}

}  // namespace

int ListRows(Size size, const ViewModel& model) {
    return LayOut(size, model).listRows;
}

void Draw(Canvas& canvas, const ViewModel& model, const Look& look) {
    const Size size = canvas.Extent();
    if (size.rows < 5 || size.columns < 20) {
        canvas.Write(0, 0, size.columns, "too small");
        return;
    }
    const Layout layout = LayOut(size, model);
    if (layout.isFull) {
        DrawNowPlaying(canvas, layout.nowPlayingRows - 1, model.Player(), look);
    } else {
        DrawNowPlayingBriefly(canvas, model.Player());
    }
    DrawList(canvas, layout, model);
    DrawStatus(canvas, model, look);
    if (model.ShowsHelp()) {
        DrawHelp(canvas);
    }
}

}  // namespace IpodControl::PlayerView

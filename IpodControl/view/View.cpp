#include "IpodControl/view/View.h"

#include <algorithm>

#include "IpodControl/view/ViewParts.h"

namespace IpodControl::PlayerView {

namespace {

bool HasFilterLine(const ViewModel& model) {
    return model.IsTyping() || !model.List().FilterText().empty();
}

Layout LayOut(Size size, const ViewModel& model) {
    Layout layout;
    layout.isFull = size.rows >= 14 && size.columns >= 40;
    layout.nowPlayingRows = layout.isFull ? std::clamp(size.rows * 2 / 5, 6, 14) : 2;
    layout.hasHeader = size.rows >= 6;
    layout.hasFilter = HasFilterLine(model);
    layout.listRow = layout.nowPlayingRows + (layout.hasHeader ? 1 : 0) + (layout.hasFilter ? 1 : 0);
    layout.listRows = std::max(size.rows - 1 - layout.listRow, 1);
    return layout;
}

void DrawTooSmall(Canvas& canvas) {
    canvas.Write(0, 0, canvas.Extent().columns, "too small");
}

}  // namespace

int ListRows(Size size, const ViewModel& model) {
    return LayOut(size, model).listRows;
}

void Draw(Canvas& canvas, const ViewModel& model, const Look& look) {
    const Size size = canvas.Extent();
    if (size.rows < kSmallest.rows || size.columns < kSmallest.columns) {
        DrawTooSmall(canvas);
        return;
    }
    const Layout layout = LayOut(size, model);
    if (layout.isFull) {
        DrawNowPlaying(canvas, layout, model.Playing(), look);
    } else {
        DrawNowPlayingBriefly(canvas, model.Playing());
    }
    DrawList(canvas, layout, model);
    DrawStatus(canvas, model, look);
    if (model.ShowsHelp()) {
        DrawHelp(canvas);
    }
}

}  // namespace IpodControl::PlayerView

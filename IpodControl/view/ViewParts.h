// The parts of the view.
#pragma once

#include "IpodControl/view/View.h"

namespace IpodControl::PlayerView {

struct Layout {
    bool isFull = false;  ///< room for the cover, and for each text of the track on a line of its own
    int nowPlayingRows = 0;
    bool hasHeader = false;
    bool hasFilter = false;
    int listRow = 0;
    int listRows = 0;
};

void DrawNowPlaying(Canvas& canvas, const Layout& layout, const NowPlaying& nowPlaying, const Look& look);
void DrawNowPlayingBriefly(Canvas& canvas, const NowPlaying& nowPlaying);
void DrawList(Canvas& canvas, const Layout& layout, const ViewModel& model);
void DrawStatus(Canvas& canvas, const ViewModel& model, const Look& look);
void DrawHelp(Canvas& canvas);

}  // namespace IpodControl::PlayerView

// Draws the model into a window of cells.
#pragma once

#include "IpodControl/view/Canvas.h"
#include "IpodControl/view/ViewModel.h"

namespace IpodControl::PlayerView {

struct Look {
    int colours = 256;     ///< that the terminal has; 0: none
    std::string endpoint;  ///< whose service it is
};

/// How many items of the list a window of that size shows.
int ListRows(Size size, const ViewModel& model);

void Draw(Canvas& canvas, const ViewModel& model, const Look& look);

/// The part of Draw at the top: `rows` rows with the cover and each text of the track on a line of its own,
/// or two with the least.
void DrawNowPlaying(Canvas& canvas, int rows, const NowPlaying& nowPlaying, const Look& look);
void DrawNowPlayingBriefly(Canvas& canvas, const NowPlaying& nowPlaying);

}  // namespace IpodControl::PlayerView

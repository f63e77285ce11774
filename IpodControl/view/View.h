// Draws the model into a window of cells.
#pragma once

#include "IpodControl/view/Canvas.h"
#include "IpodControl/view/ViewModel.h"

namespace IpodControl::PlayerView {

struct Look {
    int colours = 256;     ///< that the terminal has; 0: none
    std::string endpoint;  ///< whose service it is
};

inline constexpr Size kSmallest{5, 20};

/// How many items of the list a window of that size shows.
int ListRows(Size size, const ViewModel& model);

void Draw(Canvas& canvas, const ViewModel& model, const Look& look);

}  // namespace IpodControl::PlayerView

// Contact sheets of the drawing tools: the frames they wrote, side by side.
#pragma once

#include <string>
#include <vector>

namespace TTML {

// One picture file of a sheet and the line written under it.
struct SheetFrame {
    std::string path;
    std::string label;
};

// Every frame as a thumbnail thumbWidth pixels wide (the frames are
// frameWidth x frameHeight), four a row, each with its label under it,
// written as a PNG to path. False when there is nothing to show or the
// sheet cannot be drawn or written. Runs where EFL is initialised.
bool WriteContactSheet(const std::vector<SheetFrame>& frames, int frameWidth, int frameHeight, int thumbWidth,
                       const std::string& path);

}  // namespace TTML

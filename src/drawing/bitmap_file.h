// The small bitmaps that user models and blocks bring as icons.
#pragma once

#include <string>
#include <string_view>

#include "drawing/display_list.h"

namespace photrak {

inline constexpr std::size_t maxBitmapBytes = std::size_t{1} << 20;
inline constexpr int maxBitmapSide = 256;

/// Reads a Windows bitmap: uncompressed, 1, 4, 8, 24 or 32 bits a pixel, 1 to 256 pixels a side,
/// rows from below or from above. The rectangle of `image` is left as it is. False with "NAME:
/// ...".
[[nodiscard]] bool ReadBitmap(std::string_view bytes, const std::string& name, BitmapImage& image,
                              std::string& error);

}  // namespace photrak

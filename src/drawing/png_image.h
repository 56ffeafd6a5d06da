// A small PNG encoder for density images: 256 colors, compressed by runs. The bytes depend on the
// picture alone.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "drawing/roles.h"

namespace photrak {

struct BitmapImage;
struct DensityImage;

/// A palette image of the levels; level 0 is transparent. Source: PNG (ISO/IEC 15948), DEFLATE
/// (RFC 1951) with the fixed codes, matches only to the byte and to the row before.
std::string PngBytes(const DensityImage& image, Theme theme);

/// The pixels as they are.
std::string PngBytes(const BitmapImage& image);

std::string Base64(std::string_view bytes);

}  // namespace photrak

// Source: BITMAPFILEHEADER and BITMAPINFOHEADER as Windows 3 writes them, little-endian.
#include "drawing/bitmap_file.h"

#include <cstdlib>

#include "base/text.h"

namespace photrak {
namespace {

constexpr std::size_t headerBytes = 54;

std::uint32_t Number(std::string_view bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i > 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
    }
    return value;
}

struct BitmapHeader {
    std::uint32_t dataAt = 0, infoSize = 0, bits = 0, compression = 0, colors = 0;
    std::int32_t width = 0, height = 0;  // a height below 0: rows from above
};

BitmapHeader HeaderOf(std::string_view bytes) {
    BitmapHeader header;
    header.dataAt = Number(bytes, 10, 4);
    header.infoSize = Number(bytes, 14, 4);
    header.width = static_cast<std::int32_t>(Number(bytes, 18, 4));
    header.height = static_cast<std::int32_t>(Number(bytes, 22, 4));
    header.bits = Number(bytes, 28, 2);
    header.compression = Number(bytes, 30, 4);
    header.colors = Number(bytes, 46, 4);
    if (header.bits <= 8 && header.colors == 0) header.colors = 1u << header.bits;
    return header;
}

bool HasSize(std::int64_t side) {
    return side >= 1 && side <= maxBitmapSide;
}

/// Why the file cannot be shown; empty: it can.
std::string_view Problem(std::string_view bytes, const BitmapHeader& header) {
    const std::uint32_t bits = header.bits;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24 && bits != 32) {
        return "has another depth than 1, 4, 8, 24 or 32 bits";
    }
    if (header.compression != 0) return "is compressed";
    if (!HasSize(header.width) || !HasSize(std::abs(std::int64_t{header.height}))) {
        return "has sides other than 1 to 256 pixels";
    }
    if (bits <= 8 && (header.colors > 256 || headerBytes + 4 * header.colors > bytes.size())) {
        return "ends within its colors";
    }
    return {};
}

}  // namespace

bool ReadBitmap(std::string_view bytes, const std::string& name, BitmapImage& image,
                std::string& error) {
    const auto refuse = [&](std::string_view why) {
        error = Concat(name, ": the bitmap ", why);
        return false;
    };
    if (bytes.size() > maxBitmapBytes) return refuse("is larger than 1 MiB");
    if (bytes.size() < headerBytes || !bytes.starts_with("BM")) return refuse("is no bitmap file");
    const BitmapHeader header = HeaderOf(bytes);
    if (const std::string_view problem = Problem(bytes, header); !problem.empty()) {
        return refuse(problem);
    }
    const bool fromAbove = header.height < 0;
    const auto width = static_cast<std::size_t>(header.width);
    const auto height = static_cast<std::size_t>(fromAbove ? -header.height : header.height);
    const std::size_t stride = (width * header.bits + 31) / 32 * 4;
    if (header.dataAt > bytes.size() || bytes.size() - header.dataAt < stride * height) {
        return refuse("ends within its pixels");
    }
    const std::size_t colorsAt = 14 + std::size_t{header.infoSize};
    if (header.bits <= 8 && colorsAt + 4 * std::size_t{header.colors} > bytes.size()) {
        return refuse("ends within its colors");
    }
    image.columns = static_cast<int>(width);
    image.rows = static_cast<int>(height);
    image.pixels.assign(3 * width * height, 0);
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t row = header.dataAt + (fromAbove ? y : height - 1 - y) * stride;
        for (std::size_t x = 0; x < width; ++x) {
            std::size_t at = row + x * header.bits / 8;
            if (header.bits <= 8) {
                const std::uint32_t shift =
                    8 - header.bits - static_cast<std::uint32_t>(x * header.bits % 8);
                const std::uint32_t index =
                    Number(bytes, at, 1) >> shift & ((1u << header.bits) - 1);
                if (index >= header.colors) return refuse("uses a color that it does not have");
                at = colorsAt + 4 * std::size_t{index};
            }
            std::uint8_t* pixel = &image.pixels[3 * (y * width + x)];
            for (std::size_t part = 0; part < 3; ++part) {
                pixel[part] = static_cast<std::uint8_t>(bytes[at + 2 - part]);  // blue comes first
            }
        }
    }
    return true;
}

}  // namespace photrak

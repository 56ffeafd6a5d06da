// Icons and bitmaps: any bytes give a picture or an error.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "drawing/bitmap_file.h"
#include "drawing/icon_picture.h"
#include "drawing/svg_writer.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Drawing drawing;
    drawing.size = {30.0, 30.0};
    IconPicture icon;
    std::string error;
    if (ReadIcon(text, "x", icon, error)) {
        drawing.Add(IconItem{std::make_shared<const IconPicture>(icon), {0, 0, 30, 30}});
    }
    BitmapImage image;
    if (ReadBitmap(text, "x", image, error)) drawing.Add(image);
    if (IsOneIn(16, text)) Require(!SvgText(drawing, Theme::Light, "x").empty());
    return 0;
}

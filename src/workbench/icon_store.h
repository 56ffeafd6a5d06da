// The pictures of blocks, loaded once: those of the palette's models at the first paint, icon files
// that blocks name when they are drawn, and again when their date changes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "drawing/bitmap_file.h"
#include "drawing/icon_picture.h"

namespace photrak {

class PaletteModels;

class IconStore {
  public:
    /// Loads the bitmaps of all models, or the vector pictures beside them. What fails is logged,
    /// into log.txt of `logDirectory`. Does nothing the second time.
    void LoadModelIcons(const PaletteModels& models, const std::string& modelDirectory,
                        const std::string& logDirectory);

    /// Draws the picture of a model's bitmap by its bare name over a square; false if there is
    /// none.
    bool DrawModel(std::string_view bitmap, const Rect& square, std::vector<DrawItem>& items) const;
    /// Draws an icon file by its path; false if it cannot be read.
    bool DrawFile(const std::string& path, const Rect& square, std::vector<DrawItem>& items);

  private:
    using Picture = std::variant<std::monostate, std::shared_ptr<const IconPicture>, BitmapImage>;
    struct File {
        Picture picture;
        std::int64_t date = 0;
    };
    static Picture Load(const std::string& path, std::string& error);
    static bool Draw(const Picture& picture, const Rect& square, std::vector<DrawItem>& items);

    std::map<std::string, Picture, std::less<>> models_;
    std::map<std::string, File> files_;
    bool loaded_ = false;
};

}  // namespace photrak

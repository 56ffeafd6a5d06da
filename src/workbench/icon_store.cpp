// A vector picture of the same stem stands in for a bitmap.
#include "workbench/icon_store.h"

#include <filesystem>

#include "base/log.h"
#include "base/text.h"
#include "platform/file_system.h"
#include "workbench/model_table.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostOwnFiles = 1000;  // kept; a diagram may name any number

std::int64_t DateOf(const std::string& path) {
    std::error_code error;
    const auto time = fs::last_write_time(path, error);
    return error ? 0 : time.time_since_epoch().count();
}

}  // namespace

IconStore::Picture IconStore::Load(const std::string& path, std::string& error) {
    std::string text;
    const std::string vector = fs::path(path).replace_extension(".svg").string();
    IconPicture icon;
    if (ReadWholeFile(vector, text, error, maxBitmapBytes) && ReadIcon(text, vector, icon, error)) {
        return std::make_shared<const IconPicture>(std::move(icon));
    }
    BitmapImage image;
    if (ReadWholeFile(path, text, error, maxBitmapBytes) && ReadBitmap(text, path, image, error)) {
        return image;
    }
    return {};
}

bool IconStore::Draw(const Picture& picture, const Rect& square, std::vector<DrawItem>& items) {
    if (const auto* icon = std::get_if<std::shared_ptr<const IconPicture>>(&picture)) {
        items.emplace_back(IconItem{*icon, square});
    } else if (const auto* image = std::get_if<BitmapImage>(&picture)) {
        items.emplace_back(*image);
        std::get<BitmapImage>(items.back()).rect = square;
    } else {
        return false;
    }
    return true;
}

void IconStore::LoadModelIcons(const PaletteModels& models, const std::string& modelDirectory,
                               const std::string& logDirectory) {
    if (loaded_) return;
    loaded_ = true;
    std::string log;
    for (std::int32_t i = 0; i <= models.Last(); ++i) {
        const std::string& bitmap = models.Row(i).bitmap;
        const auto [place, isNew] = models_.try_emplace(bitmap);
        if (!isNew || bitmap.empty()) continue;
        std::string error;
        place->second = Load(modelDirectory + bitmap, error);
        if (std::holds_alternative<std::monostate>(place->second)) {
            log += Concat("failed to load bitmap ", bitmap, "\n");
        }
    }
    if (log.empty()) return;
    const WorkingDirectory there(logDirectory);
    LogText(log);
}

bool IconStore::DrawModel(std::string_view bitmap, const Rect& square,
                          std::vector<DrawItem>& items) const {
    const auto found = models_.find(bitmap);
    return found != models_.end() && Draw(found->second, square, items);
}

bool IconStore::DrawFile(const std::string& path, const Rect& square,
                         std::vector<DrawItem>& items) {
    const std::int64_t date = DateOf(path);
    const auto known = files_.find(path);
    if (known != files_.end() && known->second.date == date) {
        return Draw(known->second.picture, square, items);
    }
    if (files_.size() >= mostOwnFiles) files_.clear();
    std::string ignored;  // the block is drawn as one without a picture
    File& file = files_[path];
    file = {Load(path, ignored), date};
    return Draw(file.picture, square, items);
}

}  // namespace photrak

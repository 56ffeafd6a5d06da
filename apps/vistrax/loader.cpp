#include "vistrax/loader.h"

#include <QMetaObject>
#include <chrono>
#include <filesystem>

namespace photrak {
namespace {

void AddFile(FileStamp& stamp, const std::filesystem::path& path, bool mustExist) {
    std::error_code problem;
    const auto size = std::filesystem::file_size(path, problem);
    const auto time = std::filesystem::last_write_time(path, problem);
    if (problem) {
        if (mustExist) stamp.exists = false;
        return;
    }
    // Each file weighs differently, so that changes of two do not cancel.
    constexpr std::uint64_t weight = 1'000'003;
    stamp.size = stamp.size * weight + size + 1;
    const auto ticks = static_cast<std::uint64_t>(time.time_since_epoch().count());
    stamp.time = static_cast<std::int64_t>(static_cast<std::uint64_t>(stamp.time) * weight + ticks);
}

std::vector<std::string> NamesOf(const PlotSpec& spec) {
    std::vector<std::string> names;
    for (const PlotFile& file : spec.files) names.push_back(file.name);
    return names;
}

std::shared_ptr<LoadResult> Read(const std::string& path, const std::vector<std::string>& known) {
    auto result = std::make_shared<LoadResult>();
    result->path = path;
    FileStamp before = StampOf(path, known);
    result->loaded = LoadPlot(path, result->plot, result->error);
    result->files = NamesOf(result->plot.spec);
    // The first time the names come with the reading.
    if (result->files != known) before = StampOf(path, result->files);
    result->stamp = before;
    result->changedMeanwhile = !(StampOf(path, result->files) == before);
    return result;
}

}  // namespace

FileStamp StampOf(const std::string& path, const std::vector<std::string>& files) {
    FileStamp stamp;
    AddFile(stamp, path, true);
    const auto folder = std::filesystem::path(path).parent_path();
    for (const std::string& file : files) AddFile(stamp, folder / file, false);
    return stamp;
}

Loader::Loader(QObject* parent) : QObject(parent) {
    pool_.setMaxThreadCount(2);
}

Loader::~Loader() {
    pool_.clear();
    pool_.waitForDone();
}

void Loader::Load(const std::string& path, const std::vector<std::string>& knownFiles) {
    pool_.start([this, path, knownFiles] {
        auto result = Read(path, knownFiles);
        QMetaObject::invokeMethod(
            this, [this, result] { Q_EMIT Done(result); }, Qt::QueuedConnection);
    });
}

}  // namespace photrak

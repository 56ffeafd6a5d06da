#include "qt/file_watch.h"

#include <QFileInfo>
#include <QSet>

namespace photrak {

FileWatch::FileWatch(QObject* parent) : QObject(parent) {
    constexpr int pollMilliseconds = 2000;
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &FileWatch::OnPath);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &FileWatch::OnPath);
    poll_.setInterval(pollMilliseconds);
    connect(&poll_, &QTimer::timeout, this, [this] {
        Arm();
        const QStringList names = paths_.keys();
        for (const QString& name : names) Q_EMIT Changed(name);
    });
}

void FileWatch::Watch(const QString& name, const QStringList& paths) {
    if (paths.isEmpty()) {
        paths_.remove(name);
    } else {
        paths_[name] = paths;
    }
    if (paths_.isEmpty()) {
        poll_.stop();
    } else if (!poll_.isActive()) {
        poll_.start();
    }
    Arm();
}

void FileWatch::Arm() {
    QSet<QString> wanted;
    for (const QStringList& paths : std::as_const(paths_)) {
        for (const QString& path : paths) {
            const QFileInfo info(path);
            if (info.exists()) wanted.insert(path);
            if (QFileInfo::exists(info.absolutePath())) wanted.insert(info.absolutePath());
        }
    }
    const QStringList watched = watcher_.files() + watcher_.directories();
    const QSet<QString> present(watched.begin(), watched.end());
    const QStringList gone = (present - wanted).values(), added = (wanted - present).values();
    if (!gone.isEmpty()) watcher_.removePaths(gone);
    if (!added.isEmpty()) watcher_.addPaths(added);
}

void FileWatch::OnPath(const QString& path) {
    Arm();
    QStringList names;
    for (auto entry = paths_.cbegin(); entry != paths_.cend(); ++entry) {
        const auto concerns = [&](const QString& file) {
            return file == path || QFileInfo(file).absolutePath() == path;
        };
        if (std::any_of(entry->cbegin(), entry->cend(), concerns)) names.append(entry.key());
    }
    for (const QString& name : names) Q_EMIT Changed(name);
}

}  // namespace photrak

// How the viewer follows files: a writer truncates and rewrites them in place, so they are read
// when they have rested for a moment, and the old picture stays until the new one is whole.

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include "qt/text_measure_qt.h"
#include "vistrax/viewer_window.h"

namespace photrak {

void ViewerWindow::Check(const QString& path) {
    const std::string name = path.toStdString();
    const auto index = session_.Find(name);
    if (!index || loading_.contains(name)) return;
    const auto state =
        session_.Noticed(*index, StampOf(name, files_[name]), QDateTime::currentMSecsSinceEpoch());
    if (state == ReloadState::Settling) settle_.start();
    if (state == ReloadState::Ready) {
        loading_.insert(name);
        loader_.Load(name, files_[name]);
    }
    if (PlotWidget* widget = Find(path)) widget->ShowMessage();
}

void ViewerWindow::CheckSettling() {
    bool any = false;
    for (std::size_t i = 0; i < session_.Count(); ++i) {
        if (session_.At(i).state != ReloadState::Settling) continue;
        any = true;
        Check(ToQString(session_.At(i).path));
    }
    if (!any) settle_.stop();
}

void ViewerWindow::TakeLoaded(const std::shared_ptr<LoadResult>& result) {
    loading_.erase(result->path);
    const QString path = ToQString(result->path);
    const auto index = session_.Find(result->path);
    if (!index) return;  // closed meanwhile
    files_[result->path] = result->files;
    QStringList watched{path};
    const QDir folder = QFileInfo(path).absoluteDir();
    for (const std::string& file : result->files) watched.append(folder.filePath(ToQString(file)));
    watch_.Watch(path, watched);
    if (!result->loaded) {
        session_.LoadFailed(*index, result->error, result->stamp);
    } else if (!result->changedMeanwhile || !session_.At(*index).wasRead) {
        session_.Loaded(*index, std::move(result->plot), result->stamp);
    }
    ShowAgain(result->path);
    for (const std::size_t over : session_.ShownOn(result->path)) ShowAgain(session_.At(over).path);
    if (current_ && current_->Open().path == result->path) Retitle();
    Q_EMIT Loaded(path);
    Check(path);  // it may have changed while it was read
}

void ViewerWindow::ShowAgain(const std::string& path) {
    PlotWidget* widget = Find(ToQString(path));
    const auto index = session_.Find(path);
    if (!widget || !index) return;
    if (session_.At(*index).wasRead) {
        widget->Show(std::make_shared<const Plot>(session_.Shown(*index)));
    } else {
        widget->ShowMessage();
        widget->Update(Change::View);
    }
}

}  // namespace photrak

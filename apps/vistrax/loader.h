// Reads plots on worker threads, so that the window never stands still, and tells the stamp of
// their files.
#pragma once

#include <QObject>
#include <QThreadPool>
#include <memory>
#include <string>
#include <vector>

#include "plotting/session.h"

namespace photrak {

struct LoadResult {
    std::string path;
    bool loaded = false;
    bool changedMeanwhile = false;  // a writer was at work: what was read may be half
    Plot plot;
    std::string error;
    std::vector<std::string> files;  // bare names of the data files
    FileStamp stamp;                 // from before it was read
};

/// Stamp of a command file and the data files beside it.
FileStamp StampOf(const std::string& path, const std::vector<std::string>& files);

class Loader : public QObject {
    Q_OBJECT

  public:
    explicit Loader(QObject* parent = nullptr);
    ~Loader() override;

    /// Starts reading; Done comes from the event loop.
    void Load(const std::string& path, const std::vector<std::string>& knownFiles);

  Q_SIGNALS:
    void Done(std::shared_ptr<photrak::LoadResult> result);

  private:
    QThreadPool pool_;
};

}  // namespace photrak

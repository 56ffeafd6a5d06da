// Tells when files change, are replaced, vanish or appear. A file that is replaced is no longer
// watched by the system, and a watched folder does not tell of rewriting in place: both are
// watched, and armed again after each signal. Network folders send nothing; they are asked every
// two seconds.
#pragma once

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

namespace photrak {

class FileWatch : public QObject {
    Q_OBJECT

  public:
    explicit FileWatch(QObject* parent = nullptr);

    /// Watches these absolute paths under a name, in place of what it had before; files need not
    /// exist yet.
    void Watch(const QString& name, const QStringList& paths);
    void Forget(const QString& name) { Watch(name, {}); }

  Q_SIGNALS:
    /// Something may have changed for this name: look at the files.
    void Changed(const QString& name);

  private:
    void Arm();
    void OnPath(const QString& path);

    QFileSystemWatcher watcher_;
    QTimer poll_;
    QHash<QString, QStringList> paths_;  // by name
};

}  // namespace photrak

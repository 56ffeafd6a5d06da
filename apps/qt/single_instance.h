// One window for one user and display: a second start hands its request to the first and ends. The
// socket lies in a folder that only the user can enter; never across users.
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>

namespace photrak {

struct InstanceRequest {
    QString directory;  // working directory of the start
    QStringList files;
    QString token;  // that lets the window come to the front; may be empty
};

class SingleInstance : public QObject {
    Q_OBJECT

  public:
    /// \param application a short word, part of the socket's name
    explicit SingleInstance(const QString& application, QObject* parent = nullptr);

    enum class Outcome {
        First,       // this process is the one; Requested tells of later starts
        HandedOver,  // the running one took the request
        Alone,       // no folder to meet in, or the other does not answer: open an own window
    };
    Outcome Start(const InstanceRequest& request, int patienceMilliseconds = 2000);

    /// "/run/user/1000/photrak/vistrax-0.sock"; empty if there is no safe folder.
    static QString SocketPath(const QString& application);

  Q_SIGNALS:
    void Requested(const InstanceRequest& request);

  private:
    bool Listen();
    bool HandOver(const InstanceRequest& request, int patienceMilliseconds) const;
    void Receive();

    QString path_;
    std::unique_ptr<QLockFile> lock_;
    QLocalServer server_;
};

}  // namespace photrak

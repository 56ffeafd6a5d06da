#include "qt/single_instance.h"

#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace photrak {
namespace {

constexpr quint32 protocolVersion = 1;
constexpr qint64 largestMessage = 1 << 20;
constexpr qsizetype longestPath = 100;  // of a socket's address the system takes 107
const char accepted[] = "ok\n";

/// A folder that belongs to this user and that nobody else can enter.
bool IsPrivate(const QString& folder) {
    struct stat found {};
    if (lstat(QFile::encodeName(folder).constData(), &found) != 0) return false;
    return S_ISDIR(found.st_mode) && found.st_uid == geteuid() && (found.st_mode & 0077) == 0;
}

bool MakePrivate(const QString& folder) {
    mkdir(QFile::encodeName(folder).constData(), 0700);
    return IsPrivate(folder);
}

QString MeetingFolder() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime) && IsPrivate(runtime)) {
        const QString folder = runtime + QStringLiteral("/photrak");
        if (folder.size() < longestPath / 2 && MakePrivate(folder)) return folder;
    }
    const QString folder = QStringLiteral("/tmp/photrak-%1").arg(geteuid());
    return MakePrivate(folder) ? folder : QString();
}

/// The display as a part of a file name; ":0" and "localhost:0" are one.
QString DisplayWord() {
    QString display = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (display.isEmpty()) display = qEnvironmentVariable("DISPLAY");
    if (display.startsWith(QLatin1String("localhost:"))) display.remove(0, 9);
    if (display.startsWith(QLatin1Char(':'))) display.remove(0, 1);
    if (display.endsWith(QLatin1String(".0"))) display.chop(2);
    QString word;
    for (const QChar c : std::as_const(display)) {
        const bool plain = c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('-'));
        word += plain ? c : QLatin1Char('_');
    }
    return word.isEmpty() ? QStringLiteral("none") : word.left(30);
}

QByteArray Packed(const InstanceRequest& request) {
    QByteArray body;
    QDataStream stream(&body, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << protocolVersion << request.directory << request.files << request.token;
    return body;
}

/// False while bytes are missing.
bool Unpack(const QByteArray& body, InstanceRequest& request) {
    QDataStream stream(body);
    stream.setVersion(QDataStream::Qt_6_0);
    quint32 version = 0;
    stream >> version >> request.directory >> request.files >> request.token;
    return stream.status() == QDataStream::Ok && version == protocolVersion;
}

}  // namespace

SingleInstance::SingleInstance(const QString& application, QObject* parent)
    : QObject(parent), path_(SocketPath(application)) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::Receive);
}

QString SingleInstance::SocketPath(const QString& application) {
    const QString folder = MeetingFolder();
    if (folder.isEmpty()) return {};
    const QString path = QStringLiteral("%1/%2-%3.sock").arg(folder, application, DisplayWord());
    return path.size() > longestPath ? QString() : path;
}

SingleInstance::Outcome SingleInstance::Start(const InstanceRequest& request,
                                              int patienceMilliseconds) {
    if (path_.isEmpty()) return Outcome::Alone;
    lock_ = std::make_unique<QLockFile>(path_ + QStringLiteral(".lock"));
    lock_->setStaleLockTime(0);  // stale only when its owner is gone
    if (lock_->tryLock(0)) return Listen() ? Outcome::First : Outcome::Alone;
    return HandOver(request, patienceMilliseconds) ? Outcome::HandedOver : Outcome::Alone;
}

/// Who holds the lock owns the name: what stands there is of a process that is gone.
bool SingleInstance::Listen() {
    QLocalServer::removeServer(path_);
    return server_.listen(path_);
}

bool SingleInstance::HandOver(const InstanceRequest& request, int patienceMilliseconds) const {
    QElapsedTimer clock;
    clock.start();
    const auto left = [&] {
        return std::max(0, patienceMilliseconds - static_cast<int>(clock.elapsed()));
    };
    QLocalSocket socket;
    while (left() > 0) {
        socket.connectToServer(path_);
        if (socket.waitForConnected(left())) break;
        QThread::msleep(20);  // it holds the lock and does not listen yet
    }
    if (socket.state() != QLocalSocket::ConnectedState) return false;
    socket.write(Packed(request));
    socket.flush();
    while (left() > 0 && socket.bytesAvailable() < 3) {
        if (!socket.waitForReadyRead(left())) break;
    }
    return socket.readAll() == accepted;
}

void SingleInstance::Receive() {
    constexpr int silenceMilliseconds = 3000;
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        QTimer::singleShot(silenceMilliseconds, socket, &QLocalSocket::abort);
        const auto body = std::make_shared<QByteArray>();
        const auto read = [this, socket, body] {
            body->append(socket->readAll());
            InstanceRequest request;
            if (body->size() > largestMessage) {
                socket->abort();
            } else if (Unpack(*body, request)) {
                socket->disconnect(this);
                socket->write(accepted);
                socket->flush();
                socket->disconnectFromServer();
                Q_EMIT Requested(request);
            }
        };
        connect(socket, &QLocalSocket::readyRead, this, read);
        if (socket->bytesAvailable() > 0) read();
    }
}

}  // namespace photrak

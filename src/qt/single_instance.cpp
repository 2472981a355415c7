#include "qt/single_instance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QStringList>
#include <QWidget>
#include <QWindow>

namespace qtface {

namespace {

// The folder's real path, also before it exists (a first start makes it): the
// nearest existing folder above it resolved, the rest appended as it is, so
// that a start before and one after its making agree.
QString realPath(const QString& folder) {
    QString path = QDir::cleanPath(QDir(folder).absolutePath());
    QStringList missing;
    QFileInfo info(path);
    while (!info.exists() && !info.isRoot() && !path.isEmpty()) {
        missing.prepend(info.fileName());
        path = info.absolutePath();
        info = QFileInfo(path);
    }
    QString real = info.canonicalFilePath();
    if (real.isEmpty()) real = path;
    for (const QString& part : missing) real = QDir(real).filePath(part);
    return QDir::cleanPath(real);
}

// How long a later start waits on the holder to take its request.
constexpr int kRequestWaitMs = 2000;

} // namespace

SingleInstance::SingleInstance(const QString& dataFolder) {
    const QByteArray hash = QCryptographicHash::hash(realPath(dataFolder).toUtf8(), QCryptographicHash::Sha256).toHex().left(32);
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    // A socket path has room for about a hundred bytes: the hash is cut to 128 bits.
    if (!runtime.isEmpty()) base_ = QDir(runtime).filePath(QStringLiteral("quillmere-") + QString::fromLatin1(hash));
}

SingleInstance::~SingleInstance() {
    if (server_) server_->close();
}

bool SingleInstance::claim() {
    if (base_.isEmpty()) return true; // no runtime folder to hold a lock
    lock_ = std::make_unique<QLockFile>(lockPath());
    // Held as long as the window runs, however long that is: only a holder
    // that is no longer running makes the lock stale.
    lock_->setStaleLockTime(0);
    if (lock_->tryLock(0)) {
        listen();
        return true;
    }
    if (lock_->error() != QLockFile::LockFailedError) return true;

    QLocalSocket socket;
    socket.connectToServer(serverName());
    if (socket.waitForConnected(kRequestWaitMs)) {
        socket.write("raise\n");
        socket.waitForBytesWritten(kRequestWaitMs);
        socket.disconnectFromServer();
        if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(kRequestWaitMs);
    }
    return false;
}

void SingleInstance::listen() {
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    // A socket left by a killed holder: the lock is ours, so it is nobody's.
    QLocalServer::removeServer(serverName());
    if (!server_->listen(serverName())) return; // a later start then just ends
    connect(server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* s = server_->nextPendingConnection()) {
            connect(s, &QLocalSocket::disconnected, s, &QObject::deleteLater);
            s->disconnectFromServer();
            if (raise_) raise_();
        }
    });
}

void bringToFront(QWidget* window) {
    if (!window) return;
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
    if (QWindow* handle = window->windowHandle()) handle->requestActivate();
}

} // namespace qtface

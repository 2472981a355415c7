#include "qt/qt_program.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <QProcess>
#include <QStandardPaths>

namespace qtface {

bool QtProgram::openDocument(const std::string& path) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(path)));
}

bool QtProgram::startSystemInfo() {
    for (const QString& name : systemInfoPrograms()) {
        const QString path = QStandardPaths::findExecutable(name);
        if (!path.isEmpty() && QProcess::startDetached(path, {})) return true;
    }
    return false;
}

void QtProgram::endProgram() {
    ++ends_;
    // Every running loop returns once the event being handled is over.
    QCoreApplication::exit(0);
}

} // namespace qtface

#include "qt/qt_progress.h"

#include <QApplication>

namespace qtface {

void QtProgress::start(const std::string& text, int total) {
    stop();
    dialog_ = new QProgressDialog(QString::fromStdString(text), QStringLiteral("Cancel"), 0, total, QApplication::activeWindow());
    dialog_->setWindowTitle(QStringLiteral("Quillmere"));
    dialog_->setWindowModality(Qt::ApplicationModal);
    dialog_->setMinimumDuration(500);
    dialog_->setAutoClose(false);
    dialog_->setAutoReset(false);
    dialog_->setValue(0);
}

bool QtProgress::advance(int done) {
    if (!dialog_) return true;
    // setValue lets a modal dialog handle its events, Cancel among them.
    dialog_->setValue(done);
    return !dialog_->wasCanceled();
}

void QtProgress::stop() {
    if (!dialog_) return;
    dialog_->close();
    delete dialog_.data();
}

} // namespace qtface

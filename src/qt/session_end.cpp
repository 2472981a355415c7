#include "qt/session_end.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

#if QT_CONFIG(sessionmanager)
#include <QSessionManager>
#endif

namespace qtface {

namespace {

int signalFds[2] = {-1, -1};
constexpr int kSignals[] = {SIGTERM, SIGHUP, SIGINT};

// Only an async-signal-safe write here; the event loop does the rest.
extern "C" void onEndSignal(int) {
    char c = 1;
    ssize_t ignored = ::write(signalFds[0], &c, 1);
    (void)ignored;
}

} // namespace

EndRequests::EndRequests(forms::Runtime& runtime, std::function<void()> end) : runtime_(runtime), end_(std::move(end)) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalFds) == 0) {
        notifier_ = new QSocketNotifier(signalFds[1], QSocketNotifier::Read, this);
        connect(notifier_, &QSocketNotifier::activated, this, &EndRequests::readSignal);
        struct sigaction sa {};
        sa.sa_handler = onEndSignal;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = SA_RESTART;
        for (int s : kSignals) sigaction(s, &sa, nullptr);
    }
#if QT_CONFIG(sessionmanager)
    connect(qApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) { request(); });
#endif
    // The loop is ending: nothing can wait any more.
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { end_(); });
}

EndRequests::~EndRequests() {
    if (!notifier_) return;
    struct sigaction sa {};
    sa.sa_handler = SIG_DFL;
    sigemptyset(&sa.sa_mask);
    for (int s : kSignals) sigaction(s, &sa, nullptr);
    ::close(signalFds[0]);
    ::close(signalFds[1]);
    signalFds[0] = signalFds[1] = -1;
}

void EndRequests::readSignal() {
    char buf[16];
    ssize_t ignored = ::read(signalFds[1], buf, sizeof buf);
    (void)ignored;
    request();
}

void EndRequests::request() {
    if (runtime_.depth() > 0) {
        if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
        QTimer::singleShot(10, this, [this] { request(); });
        return;
    }
    end_();
}

} // namespace qtface

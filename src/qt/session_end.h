#pragma once
#include <QObject>
#include <functional>

#include "forms/runtime.h"

class QSocketNotifier;

namespace qtface {

// The roads out of the program other than its own Exit: SIGTERM, SIGHUP and
// SIGINT, the end of the desktop session, the application quitting. Each asks
// for `end` (which must be safe to call more than once). It runs as an outermost
// event: while a handler is running (a modal box open inside a command) the
// boxes are closed and the request waits until the handler has returned.
class EndRequests : public QObject {
public:
    EndRequests(forms::Runtime& runtime, std::function<void()> end);
    ~EndRequests() override;

    void request();

private:
    void readSignal();

    forms::Runtime& runtime_;
    std::function<void()> end_;
    QSocketNotifier* notifier_ = nullptr;
};

} // namespace qtface

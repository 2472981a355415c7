#pragma once
#include <QPointer>
#include <QProgressDialog>

#include "forms/ports.h"

namespace qtface {

// A progress dialog with Cancel over the program's windows, shown only when
// the work lasts more than a moment. While it is up the windows take no input.
class QtProgress : public forms::ProgressPort {
public:
    void start(const std::string& text, int total) override;
    bool advance(int done) override;
    void stop() override;

private:
    QPointer<QProgressDialog> dialog_;
};

} // namespace qtface

#pragma once
#include <QStringList>

#include "forms/ports.h"

namespace qtface {

// The end of the program and the start of a system information program.
class QtProgram : public forms::ProgramPort {
public:
    // Looks on PATH for these, in order.
    static QStringList systemInfoPrograms() { return {"hardinfo", "kinfocenter", "gnome-system-monitor"}; }

    bool startSystemInfo() override;
    // Leaves the event loop once the current event has returned.
    void endProgram() override;
    bool openDocument(const std::string& path) override;
    bool endRequested() const { return ends_ > 0; }
    int ends() const { return ends_; }

private:
    int ends_ = 0;
};

} // namespace qtface

#include "support/qt_harness.h"

#include <QApplication>
#include <QScreen>
#include <QTest>
#include <cmath>

namespace qttest {

QtHarness::QtHarness()
    : host(core.runtime), pictures(host.twips()),
      platform{core.runtime, core.files, core.dialogs, pictures, core.printer, currency, core.program, core.platform.places} {
    core.runtime.setHost(&host);
}

QtHarness::~QtHarness() {
    main.reset();
    settle();
}

bool QtHarness::start() {
    main = std::make_unique<qm::frmMain>(platform, core.globals);
    // As the program wires it: a close by the window manager ends like Exit.
    main->form.CloseRequested = [this] { main->Form_Terminate(); };
    main->Start();
    QWidget* top = topWidget();
    if (!top || !top->isVisible()) return false;
    top->activateWindow();
    if (!QTest::qWaitForWindowActive(top)) return false;
    settle();
    return true;
}

void QtHarness::clickListEntry(int index) {
    QListWidget* l = list();
    const QRect r = l->visualItemRect(l->item(index));
    QTest::mouseClick(l->viewport(), Qt::LeftButton, {}, r.center());
}

void QtHarness::click(const forms::Control& c) { QTest::mouseClick(widget(c), Qt::LeftButton); }

QPoint QtHarness::inClient(const QWidget* w) const { return w->mapTo(window()->client(), QPoint(0, 0)); }

void QtHarness::settle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

std::vector<std::vector<std::string>> itemRows(int n) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(static_cast<std::size_t>(n));
    for (int i = 1; i <= n; ++i)
        rows.push_back({"Item " + std::to_string(i), std::to_string(i), std::to_string(i % 7), "Shop", "2001", "", "SN" + std::to_string(i)});
    return rows;
}

int pixels(int twips) {
    const double dpi = QGuiApplication::primaryScreen()->logicalDotsPerInchY();
    return static_cast<int>(std::lround(twips * dpi / 1440.0));
}

} // namespace qttest

#include "support/qt_harness.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
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

bool QtHarness::startAndClick(int entry) {
    if (!start()) return false;
    clickListEntry(entry);
    return true;
}

bool QtHarness::open(const std::vector<qmtest::Harness::Category>& categories, int entry) {
    core.writeCategories(categories);
    if (!startAndClick(entry)) return false;
    settle(); // the view lays out its scroll bars when the loop runs
    return true;
}


bool BareFace::show(forms::Form& form) {
    form.setVisible(true);
    host.sync();
    QWidget* top = host.window(form)->window();
    top->activateWindow();
    return QTest::qWaitForWindowActive(top);
}

void QtHarness::clickListEntry(int index) {
    QListWidget* l = list();
    const QRect r = l->visualItemRect(l->item(index));
    QTest::mouseClick(l->viewport(), Qt::LeftButton, {}, r.center());
}

QStringList QtHarness::listTexts() const {
    QStringList out;
    for (int i = 0; i < list()->count(); ++i) out << list()->item(i)->text();
    return out;
}

void QtHarness::click(const forms::Control& c) { QTest::mouseClick(widget(c), Qt::LeftButton); }

QAction* QtHarness::menuAction(const QString& caption) const {
    auto* bar = topWidget()->findChild<QMenuBar*>();
    std::function<QAction*(const QList<QAction*>&)> find = [&](const QList<QAction*>& actions) -> QAction* {
        for (QAction* a : actions) {
            if (!a->isSeparator() && a->text() == caption) return a;
            if (a->menu())
                if (QAction* inner = find(a->menu()->actions())) return inner;
        }
        return nullptr;
    };
    return bar ? find(bar->actions()) : nullptr;
}

QPoint QtHarness::inClient(const QWidget* w) const { return w->mapTo(window()->client(), QPoint(0, 0)); }

void QtHarness::settle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

int pixels(int twips) {
    const double dpi = QGuiApplication::primaryScreen()->logicalDotsPerInchY();
    return static_cast<int>(std::lround(twips * dpi / 1440.0));
}

} // namespace qttest

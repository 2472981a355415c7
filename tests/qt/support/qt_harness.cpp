#include "support/qt_harness.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTest>
#include <QWheelEvent>
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

QRect QtHarness::editorRect() const {
    QWidget* frame = t1()->parentWidget();
    const QPoint viewport = grid()->viewport()->mapTo(frame, QPoint(0, 0));
    return QRect(t1()->mapTo(frame, QPoint(0, 0)) - viewport, t1()->size());
}

void QtHarness::clickCell(int r, int c) { QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, grid()->cellRect(r, c).center()); }

bool QtHarness::clickCaret(int n) {
    QLineEdit* e = t1();
    for (int x = 0; x < e->width(); ++x) {
        const QPoint p(x, e->height() / 2);
        if (e->cursorPositionAt(p) != n) continue;
        QTest::mouseClick(e, Qt::LeftButton, {}, p);
        return main->T1.SelStart() == n && e->cursorPosition() == n;
    }
    return false;
}

bool QtHarness::editorOn(int r, int c) const {
    const QRect cellRect = grid()->cellRect(r, c);
    const bool ok = main->FG1.Row() == r && main->FG1.Col() == c && t1()->isVisible() && QApplication::focusWidget() == t1() &&
                    !cellRect.isEmpty() && editorRect() == cellRect && t1()->text() == QString::fromStdString(cell(r, c)) &&
                    shown(r, c) == t1()->text();
    if (!ok) qWarning() << "cell" << main->FG1.Row() << main->FG1.Col() << t1()->isVisible() << editorRect() << cellRect << t1()->text();
    return ok;
}

bool QtHarness::caretAtEnd() const {
    return t1()->cursorPosition() == t1()->text().size() && main->T1.SelStart() == main->T1.length();
}

QWidget* QtHarness::focus() const { return QApplication::focusWidget() ? QApplication::focusWidget() : topWidget(); }

void QtHarness::wheel(int notches) {
    QWidget* vp = grid()->viewport();
    const QPointF at(vp->width() / 2.0, vp->height() / 2.0);
    QWheelEvent e(at, vp->mapToGlobal(at), {}, QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(vp, &e);
}

const std::vector<std::vector<std::string>> kGarage = {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                                                       {"Saw", "1000", "999.99", "Shop", "2002", "", "SN2"},
                                                       {"Lathe", "5", "5", "", "", "", "abc"}};

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

QString QtHarness::selectedText() const {
    const auto selected = list()->selectedItems();
    return selected.size() == 1 ? selected.front()->text() : QString();
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

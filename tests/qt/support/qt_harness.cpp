#include "support/qt_harness.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <cmath>

namespace qttest {

QtHarness::QtHarness(RealPorts real)
    : host(core.runtime), pictures(host.twips()),
      platform{core.runtime,
               core.files,
               real.dialogs ? static_cast<forms::DialogsPort&>(qtDialogs) : core.dialogs,
               pictures,
               real.printer ? static_cast<forms::PrinterPort&>(qtPrinter) : core.printer,
               currency,
               core.program,
               core.platform.places} {
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

ModalBoxes::ModalBoxes() {
    // Polled, since a box runs its own event loop inside the click that opened it.
    QObject::connect(&timer_, &QTimer::timeout, [this] { poll(); });
    timer_.start(10);
}

ModalBoxes::~ModalBoxes() { timer_.stop(); }

ModalBoxes& ModalBoxes::type(const QString& text, bool ok) {
    steps_.push_back([this, text, ok](QWidget* w) {
        auto* d = qobject_cast<QInputDialog*>(w);
        if (!d) return false;
        seen_.push_back({d->windowTitle(), d->labelText(), true});
        QTest::keyClicks(d->findChild<QLineEdit*>(), text);
        auto* buttons = d->findChild<QDialogButtonBox*>();
        QTest::mouseClick(buttons->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel), Qt::LeftButton);
        return true;
    });
    return *this;
}

ModalBoxes& ModalBoxes::press(QMessageBox::StandardButton button) {
    steps_.push_back([this, button](QWidget* w) {
        auto* box = qobject_cast<QMessageBox*>(w);
        if (!box || !box->button(button)) return false;
        seen_.push_back({box->windowTitle(), box->text(), false});
        QTest::mouseClick(box->button(button), Qt::LeftButton);
        return true;
    });
    return *this;
}

QStringList ModalBoxes::texts() const {
    QStringList out;
    for (const Seen& s : seen_) out << s.text;
    return out;
}

void ModalBoxes::poll() {
    QWidget* w = QApplication::activeModalWidget();
    if (!w || w == handled_) return;
    handled_ = w;
    if (!steps_.empty()) {
        auto step = std::move(steps_.front());
        steps_.pop_front();
        if (step(w)) return;
    }
    // Not the box the test expected: seen, counted and cancelled.
    ++unexpected_;
    if (auto* box = qobject_cast<QMessageBox*>(w)) seen_.push_back({box->windowTitle(), box->text(), false});
    if (auto* input = qobject_cast<QInputDialog*>(w)) seen_.push_back({input->windowTitle(), input->labelText(), true});
    if (auto* dialog = qobject_cast<QDialog*>(w)) dialog->reject();
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

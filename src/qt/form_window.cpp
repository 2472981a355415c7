#include "qt/form_window.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QScreen>
#include <QVBoxLayout>

#include "forms/control.h"
#include "forms/input.h"
#include "forms/runtime.h"
#include "qt/colors_fonts.h"
#include "qt/control_widgets.h"
#include "qt/grid_view.h"
#include "qt/input_router.h"
#include "qt/menu_face.h"
#include "qt/view_sync.h"
#include "qt/window_accessible.h"

namespace qtface {

namespace {

Qt::WindowFlags flagsFor(const forms::Form& f) {
    Qt::WindowFlags flags = (f.Border == forms::BorderStyle::FixedDialog ? Qt::Dialog : Qt::Window) |
                            Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    if (f.ControlBox) {
        flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
        if (f.Border == forms::BorderStyle::Sizable) flags |= Qt::WindowMinMaxButtonsHint;
        else if (f.Border == forms::BorderStyle::Fixed) flags |= Qt::WindowMinimizeButtonHint;
    }
    if (f.Border != forms::BorderStyle::Sizable) flags |= Qt::MSWindowsFixedSizeDialogHint;
    return flags;
}

} // namespace

// ---- FormWidget -------------------------------------------------------------------

FormWidget::FormWidget(FormWindow& owner, Qt::WindowFlags flags, bool dialog)
    : QWidget(nullptr, flags), owner_(&owner), dialog_(dialog) {}

void FormWidget::closeEvent(QCloseEvent* e) {
    // The form decides whether it goes; its window follows the model.
    e->ignore();
    if (owner_ && !owner_->detached()) owner_->closeRequested();
}

bool FormWidget::focusNextPrevChild(bool) {
    return true; // Tab is the router's: Qt moves no focus by itself
}

bool FormWidget::event(QEvent* e) {
    if (e->type() == QEvent::WindowActivate && owner_ && !owner_->detached()) owner_->takeFocus();
    return QWidget::event(e);
}

void FormWidget::resizeEvent(QResizeEvent* e) {
    QWidget::resizeEvent(e);
    if (owner_ && !owner_->detached() && isVisible()) owner_->resized();
}

// ---- FormWindow -------------------------------------------------------------------

FormWindow::FormWindow(QtHost& host, forms::Form& form) : host_(host), form_(form) {
    build();
    form_.setView(this);
}

FormWindow::~FormWindow() {
    detach();
    delete top_;
}

void FormWindow::build() {
    const Twips& twips = host_.twips();
    installWindowAccessibility();
    top_ = new FormWidget(*this, flagsFor(form_), form_.Dialog);
    top_->setObjectName(QString::fromStdString(form_.name()));
    top_->setWindowTitle(QString::fromStdString(form_.Caption));
    if (!form_.Icon.empty() && QFileInfo::exists(QString::fromStdString(form_.Icon)))
        top_->setWindowIcon(QIcon(QString::fromStdString(form_.Icon)));
    top_->setFont(toQFont(form_.font));

    auto* layout = new QVBoxLayout(top_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    router_ = std::make_unique<InputRouter>(host_, *this);
    if (!form_.menuBar().items().empty()) {
        menu_ = std::make_unique<MenuFace>(host_, form_.menuBar(), top_);
        layout->setMenuBar(menu_->bar());
        router_->setMenu(menu_.get());
    }
    client_ = new QWidget(top_);
    client_->setObjectName(QStringLiteral("client"));
    client_->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(client_);
    const QSize size(twips.px(form_.ClientWidth), twips.px(form_.ClientHeight));
    if (form_.Border == forms::BorderStyle::Sizable) {
        client_->setMinimumSize(1, 1);
        client_->resize(size);
        top_->resize(size.width(), size.height() + (menu_ ? menu_->bar()->sizeHint().height() : 0));
    } else {
        client_->setFixedSize(size);
        layout->setSizeConstraint(QLayout::SetFixedSize);
    }

    router_->watchWindow(top_);
    router_->watchWindow(client_);
    for (forms::Control* c : form_.controls()) {
        QWidget* parent = client_;
        if (c->container())
            if (QWidget* w = widgetOf(*c->container())) parent = w;
        QWidget* w = createControlWidget(host_, *c, parent);
        bindings_.push_back(std::make_unique<ControlBinding>(host_, *this, *c, w));
        router_->watch(*bindings_.back());
    }
    for (auto& b : bindings_) b->syncAll();
}

ControlBinding* FormWindow::binding(const forms::Control& c) const {
    auto* b = dynamic_cast<ControlBinding*>(c.view());
    return b && &b->window() == this ? b : nullptr;
}

QWidget* FormWindow::widgetOf(const forms::Control& c) const {
    ControlBinding* b = binding(c);
    return b ? b->widget() : nullptr;
}

void FormWindow::detach() {
    if (detached_) return;
    detached_ = true;
    for (auto& b : bindings_) b->detach();
    for (auto& b : bindings_)
        if (auto* view = qobject_cast<GridView*>(b->widget())) view->gridModel()->detach();
    if (form_.view() == this) form_.setView(nullptr);
    host_.dequeue(this);
    lastFocused_ = nullptr;
    if (!top_) return;
    host_.windowGoes(*this);
    top_->hide();
}

void FormWindow::changed(forms::Control&, forms::Prop) {
    // Focus moves come here (the runtime tells the form); the host shows them at the sync.
    if (!detached_) host_.enqueue(this);
}

void FormWindow::formChanged(forms::Form&, forms::Prop) {
    if (!detached_) host_.enqueue(this);
}

void FormWindow::sizeForm(forms::Form&, int& widthTwips, int& heightTwips) {
    if (detached_ || !top_) return;
    const Twips& twips = host_.twips();
    // The frame as the window manager drew it when the window was last shown
    // (none before that): the form's size is the outer one.
    const QSize frame = top_->frameGeometry().size() - top_->size();
    if (form_.Border == forms::BorderStyle::Sizable) {
        QSize outer = top_->frameGeometry().size();
        if (widthTwips > 0) outer.setWidth(twips.px(widthTwips));
        if (heightTwips > 0) outer.setHeight(twips.px(heightTwips));
        top_->resize((outer - frame).expandedTo(QSize(1, 1)));
    } else if (!top_->isVisible()) {
        top_->adjustSize(); // a fixed window is as big as its client area and menu
    }
    const QSize took = top_->frameGeometry().size();
    widthTwips = twips.twips(took.width());
    heightTwips = twips.twips(took.height());
}

void FormWindow::refreshFields() {
    if (detached_ || !top_) return;
    const QString caption = QString::fromStdString(form_.Caption);
    if (top_->windowTitle() != caption) top_->setWindowTitle(caption);
    if (form_.Border != forms::BorderStyle::Sizable) {
        const QSize size(host_.twips().px(form_.ClientWidth), host_.twips().px(form_.ClientHeight));
        if (client_->size() != size) client_->setFixedSize(size);
    }
    if (menu_) menu_->refresh();
    for (auto& b : bindings_) mirror(b->control(), b->widget(), forms::Prop::Other, host_.twips());
}

void FormWindow::place() {
    if (placed_) return;
    placed_ = true;
    // A fixed window takes the size of its client area and menu; a sizable one
    // keeps the size it was given.
    if (form_.Border != forms::BorderStyle::Sizable) top_->adjustSize();
    if (!form_.Centered) return;
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) return;
    const QRect avail = screen->availableGeometry();
    top_->move(avail.center() - QPoint(top_->width() / 2, top_->height() / 2));
}

void FormWindow::sync() {
    if (detached_ || !top_) return;
    if (form_.Visible() && !top_->isVisible()) {
        refreshFields();
        place();
        top_->show();
        // A window the program shows takes the keyboard, as a new window on a
        // desktop does (a bare X server gives it none).
        top_->activateWindow();
        resized(); // the size it took on the screen goes to the form, as a resize does
    } else if (!form_.Visible() && top_->isVisible()) {
        host_.windowGoes(*this);
        top_->hide();
    }
}

void FormWindow::containerMoved(const forms::Control& container) {
    for (auto& b : bindings_)
        for (const forms::Control* c = b->control().container(); c; c = c->container())
            if (c == &container) {
                b->mark(forms::Prop::Geometry);
                break;
            }
}

void FormWindow::takeFocus() {
    if (!detached_) host_.windowActivated(*this);
}

void FormWindow::closeRequested() {
    if (!detached_) forms::input::closeWindow(host_.runtime(), form_);
}

void FormWindow::resized() {
    if (resizePosted_) return;
    // Reported once the event loop runs: a resize can come in the middle of a show.
    resizePosted_ = true;
    QMetaObject::invokeMethod(this, [this] {
        resizePosted_ = false;
        if (detached_ || !top_) return;
        // The outer size, title bar and borders included, as the window manager made it.
        const QSize outer = top_->frameGeometry().size();
        const int w = host_.twips().twips(outer.width()), h = host_.twips().twips(outer.height());
        host_.dispatch([&] { form_.platformResized(w, h); });
    }, Qt::QueuedConnection);
}

} // namespace qtface

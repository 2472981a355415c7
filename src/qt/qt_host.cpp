#include "qt/qt_host.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <algorithm>

#include "forms/control.h"
#include "forms/form.h"
#include "forms/input.h"
#include "qt/control_widgets.h"
#include "qt/form_window.h"
#include "qt/view_sync.h"

namespace qtface {

namespace {
const QEvent::Type kSyncEvent = static_cast<QEvent::Type>(QEvent::registerEventType());
} // namespace

QtHost::QtHost(forms::Runtime& runtime, Twips twips) : runtime_(runtime), twips_(twips) {}

QtHost::~QtHost() {
    activated_.clear();
    for (auto& [form, w] : windows_) {
        w->detach();
        delete w;
    }
    windows_.clear();
    if (runtime_.host() == this) runtime_.setHost(nullptr);
}

void QtHost::formCreated(forms::Form& form) {
    if (windows_.count(&form)) return;
    windows_[&form] = new FormWindow(*this, form);
}

void QtHost::formDestroyed(forms::Form& form) {
    auto it = windows_.find(&form);
    if (it == windows_.end()) return;
    FormWindow* w = it->second;
    windows_.erase(it);
    if (shownFocus_ && &shownFocus_->form() == &form) shownFocus_ = nullptr;
    w->detach();
    activated_.erase(std::remove(activated_.begin(), activated_.end(), w), activated_.end());
    // The form may be going from inside one of its own widgets' events.
    w->deleteLater();
}

FormWindow* QtHost::window(const forms::Form& form) const {
    auto it = windows_.find(&form);
    return it == windows_.end() ? nullptr : it->second;
}

FormWindow* QtHost::windowOf(const forms::Control& c) const { return window(c.form()); }

void QtHost::enqueue(Syncable* s) {
    if (s->queued) return;
    s->queued = true;
    queue_.push_back(s);
    if (!runtimePost_ && !syncing_) {
        runtimePost_ = true;
        runtime_.post([this] {
            runtimePost_ = false;
            sync();
        });
    }
    if (!posted_) {
        posted_ = true;
        QCoreApplication::postEvent(this, new QEvent(kSyncEvent));
    }
}

void QtHost::dequeue(Syncable* s) {
    if (!s->queued) return;
    s->queued = false;
    queue_.erase(std::remove(queue_.begin(), queue_.end(), s), queue_.end());
}

void QtHost::customEvent(QEvent* e) {
    if (e->type() != kSyncEvent) return;
    posted_ = false;
    sync();
}

void QtHost::dispatch(const std::function<void()>& input) { runtime_.dispatch(input); }

void QtHost::sync() {
    if (syncing_) return;
    syncing_ = true;
    // Showing a widget can't change the model, so the queue only shrinks here;
    // whatever a view enqueues while it syncs waits for the next round.
    std::vector<Syncable*> batch;
    batch.swap(queue_);
    for (Syncable* s : batch) s->queued = false;
    for (Syncable* s : batch) s->sync();
    for (auto& [form, w] : windows_)
        if (w->isShown()) w->refreshFields();
    syncFocus();
    syncing_ = false;
}

// The runtime's focus is the truth; the Qt focus only shows it.
void QtHost::syncFocus() {
    forms::Control* f = runtime_.focused();
    if (!f) return;
    FormWindow* w = windowOf(*f);
    if (!w || w->detached() || !w->isShown()) return;
    w->setLastFocused(f);
    QWidget* target = nullptr;
    if (ControlBinding* b = w->binding(*f)) target = b->focusTarget();
    // A control that holds the focus while hidden shows it nowhere.
    if (!target || !target->isVisible() || !target->isEnabled()) target = w->client();
    const bool moved = f != shownFocus_;
    // Controls that show whether they hold the focus (a list's current entry).
    if (moved)
        for (forms::Control* c : {shownFocus_, f})
            if (FormWindow* cw = c ? windowOf(*c) : nullptr)
                if (ControlBinding* b = cw->binding(*c)) mirror(*c, b->widget(), forms::Prop::Focus, twips_);
    shownFocus_ = f;
    if (moved && target->window() != QApplication::activeWindow()) target->window()->activateWindow();
    if (target->window()->focusWidget() != target || QApplication::focusWidget() != target) {
        target->setFocus(Qt::OtherFocusReason);
        // A line edit drops its selection when it loses the focus; the box's
        // own selection shows again when it comes back.
        if (f->kind() == forms::Kind::TextBox && target != w->client()) mirror(*f, target, forms::Prop::Selection, twips_);
    }
}

void QtHost::windowActivated(FormWindow& w) {
    activated_.erase(std::remove(activated_.begin(), activated_.end(), &w), activated_.end());
    activated_.push_back(&w);
    if (runtime_.depth() > 0 || syncing_) return;
    forms::Control* f = runtime_.focused();
    if (f && &f->form() == &w.form()) return;
    forms::Control* target = w.lastFocused();
    if (!target || !target->canFocus()) {
        auto order = w.form().tabOrder();
        target = order.empty() ? nullptr : order.front();
    }
    if (target) forms::input::focus(runtime_, *target);
}

void QtHost::windowGoes(FormWindow& w) {
    QWidget* top = w.window();
    if (!top || !top->isActiveWindow()) return;
    for (auto it = activated_.rbegin(); it != activated_.rend(); ++it)
        if (*it != &w && (*it)->isShown()) {
            (*it)->window()->activateWindow();
            // Its form takes the focus back once the event and the sync that
            // closed the other have ended, before the next key is read.
            QMetaObject::invokeMethod(this, [this, next = QPointer<FormWindow>(*it)] {
                if (next && !next->detached()) windowActivated(*next);
            }, Qt::QueuedConnection);
            return;
        }
}

} // namespace qtface

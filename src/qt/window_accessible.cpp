#include "qt/window_accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QGroupBox>

#include "qt/control_widgets.h"
#include "qt/form_window.h"

namespace qtface {

namespace {

// Qt lists every child widget of a container, hidden ones too (they only carry
// the state "invisible"), so a reader would walk into the hidden "Loading..."
// box and the closed cell editor. This one lists the children that are shown.
class ShownChildren : public QAccessibleWidget {
public:
    ShownChildren(QWidget* w, QAccessible::Role role) : QAccessibleWidget(w, role) {}

    int childCount() const override { return static_cast<int>(shown().size()); }
    QAccessibleInterface* child(int index) const override {
        const QList<QWidget*> kids = shown();
        return index >= 0 && index < kids.size() ? QAccessible::queryAccessibleInterface(kids[index]) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child ? static_cast<int>(shown().indexOf(qobject_cast<QWidget*>(child->object()))) : -1;
    }
    QString text(QAccessible::Text t) const override {
        QString s = QAccessibleWidget::text(t);
        if (t == QAccessible::Name && s.isEmpty())
            if (auto* box = qobject_cast<QGroupBox*>(widget())) s = box->title();
        return s;
    }

private:
    QList<QWidget*> shown() const {
        QList<QWidget*> kids;
        for (QObject* o : widget()->children())
            if (auto* w = qobject_cast<QWidget*>(o); w && !w->isWindow() && !w->isHidden()) kids << w;
        return kids;
    }
};

QAccessibleInterface* windowsAndContainers(const QString&, QObject* object) {
    if (auto* top = dynamic_cast<FormWidget*>(object))
        return new ShownChildren(top, top->isDialog() ? QAccessible::Dialog : QAccessible::Window);
    auto* w = qobject_cast<QWidget*>(object);
    if (!w || !w->parentWidget() || !dynamic_cast<FormWidget*>(w->window())) return nullptr;
    if (w->objectName() == QLatin1String("client") && dynamic_cast<FormWidget*>(w->parentWidget()))
        return new ShownChildren(w, QAccessible::Client);
    if (qobject_cast<QGroupBox*>(w)) return new ShownChildren(w, QAccessible::Grouping);
    // The drawn controls: a picture or a swatch is an image, a line a separator.
    if (dynamic_cast<PictureWidget*>(w) || dynamic_cast<ShapeWidget*>(w)) return new QAccessibleWidget(w, QAccessible::Graphic);
    if (dynamic_cast<LineWidget*>(w)) return new QAccessibleWidget(w, QAccessible::Separator);
    return nullptr;
}

} // namespace

void installWindowAccessibility() {
    static const bool installed = [] {
        QAccessible::installFactory(windowsAndContainers);
        return true;
    }();
    (void)installed;
}

} // namespace qtface

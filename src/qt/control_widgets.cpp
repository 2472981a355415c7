#include "qt/control_widgets.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTextBrowser>
#include <QUrl>

#include "forms/controls.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "qt/colors_fonts.h"
#include "qt/grid_view.h"
#include "qt/qt_pictures.h"
#include "qt/text_units.h"
#include "qt/view_sync.h"

namespace qtface {

using forms::Kind;
using forms::Prop;

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

void setActive(QPalette& pal, QPalette::ColorRole role, const QColor& c) {
    pal.setColor(QPalette::Active, role, c);
    pal.setColor(QPalette::Inactive, role, c);
}

void mirrorColors(forms::Control& c, QWidget* w) {
    const QPalette& app = QApplication::palette();
    const QColor fore = toQColor(c.ForeColor(), app), back = toQColor(c.BackColor(), app);
    QPalette pal = app;
    switch (c.kind()) {
    case Kind::TextBox: case Kind::ListBox: case Kind::Browser:
        setActive(pal, QPalette::Base, back);
        setActive(pal, QPalette::Text, fore);
        break;
    case Kind::Label: case Kind::CheckBox: case Kind::Frame:
        // A system colour behind a label or frame is the window's own background.
        setActive(pal, QPalette::WindowText, fore);
        w->setAutoFillBackground(!forms::isSystemColor(c.BackColor()));
        if (w->autoFillBackground()) setActive(pal, QPalette::Window, back);
        break;
    case Kind::Button:
        if (!forms::isSystemColor(c.ForeColor())) setActive(pal, QPalette::ButtonText, fore);
        if (!forms::isSystemColor(c.BackColor())) setActive(pal, QPalette::Button, back);
        break;
    default:
        // Shapes, lines, pictures and the grid paint from the control itself.
        w->update();
        return;
    }
    w->setPalette(pal);
}

void mirrorTextBox(forms::TextBox& box, QLineEdit* edit) {
    const QString text = qs(box.Text());
    if (edit->text() != text) edit->setText(text);
    const int start = utf16Offset(text, box.SelStart());
    const int end = utf16Offset(text, box.SelStart() + box.SelLength());
    if (end > start) edit->setSelection(start, end - start);
    else edit->setCursorPosition(start);
}

// The tick boxes of a list that has them.
void mirrorListChecks(forms::ListBox& list, QListWidget* w) {
    if (!list.CheckBoxes) return;
    for (int i = 0; i < w->count() && i < list.ListCount(); ++i) {
        const Qt::CheckState state = list.Checked(i) ? Qt::Checked : Qt::Unchecked;
        QListWidgetItem* item = w->item(i);
        if (!(item->flags() & Qt::ItemIsUserCheckable) || item->checkState() != state) {
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(state);
        }
    }
}

// The name the control asks for. A widget that holds the focus is announced
// again, so that a reader says where the focus stands now (the cell editor
// moved to another cell without losing the focus).
void mirrorAccessibleName(const forms::Control& control, QWidget* widget) {
    const QString name = QString::fromStdString(control.AccessibleName());
    if (widget->accessibleName() == name) return;
    widget->setAccessibleName(name); // tells readers: NameChanged
    if (QAccessible::isActive() && widget->hasFocus()) {
        QAccessibleEvent focus(widget, QAccessible::Focus);
        QAccessible::updateAccessibility(&focus);
    }
}

void mirrorListItems(forms::ListBox& list, QListWidget* w) {
    const auto& items = list.items();
    bool same = w->count() == static_cast<int>(items.size());
    for (int i = 0; same && i < w->count(); ++i) same = w->item(i)->text() == qs(items[static_cast<std::size_t>(i)]);
    QSignalBlocker block(w);
    if (!same) {
        QStringList texts;
        texts.reserve(static_cast<qsizetype>(items.size()));
        for (const auto& s : items) texts << qs(s);
        w->clear();
        w->addItems(texts);
    }
    mirrorListChecks(list, w);
}

void mirrorListSelection(forms::ListBox& list, QListWidget* w) {
    QSignalBlocker block(w);
    const int i = list.ListIndex();
    if (i < 0 || i >= w->count()) {
        w->selectionModel()->clear();
        return;
    }
    const QModelIndex at = w->model()->index(i, 0);
    w->selectionModel()->select(at, QItemSelectionModel::ClearAndSelect);
    // The current entry is what a reader hears as focused: only while the
    // list holds the focus.
    w->selectionModel()->setCurrentIndex(list.hasFocus() ? at : QModelIndex(), QItemSelectionModel::NoUpdate);
    w->scrollToItem(w->item(i));
}

void sizeLabel(forms::Label& label, QLabel* w, const Twips& twips) {
    if (!label.AutoSize) return;
    w->adjustSize();
    w->move(twips.controlRect(label).topLeft());
}

// The label on the screen that names the control.
void mirrorAccessibility(forms::Control& c, QWidget* w) {
    if (forms::Control* label = c.LabelledBy())
        if (auto* b = dynamic_cast<ControlBinding*>(label->view()))
            if (auto* l = qobject_cast<QLabel*>(b->widget()); l && l->buddy() != w) l->setBuddy(w);
}

void mirrorFields(forms::Control& c, QWidget* w, const Twips& twips) {
    mirrorAccessibility(c, w);
    switch (c.kind()) {
    case Kind::Frame: {
        auto* g = static_cast<QGroupBox*>(w);
        const QString t = qs(static_cast<forms::Frame&>(c).Caption);
        if (g->title() != t) g->setTitle(t);
        break;
    }
    case Kind::Button: {
        auto& b = static_cast<forms::Button&>(c);
        auto* pb = static_cast<QPushButton*>(w);
        if (pb->text() != qs(b.Caption)) pb->setText(qs(b.Caption));
        if (pb->isDefault() != b.Default) pb->setDefault(b.Default);
        break;
    }
    case Kind::CheckBox: {
        auto* cb = static_cast<QCheckBox*>(w);
        const QString t = qs(static_cast<forms::CheckBox&>(c).Caption);
        if (cb->text() != t) cb->setText(t);
        break;
    }
    case Kind::TextBox: {
        auto* edit = static_cast<QLineEdit*>(w);
        bool locked = static_cast<forms::TextBox&>(c).Locked;
        if (edit->isReadOnly() != locked) edit->setReadOnly(locked);
        break;
    }
    case Kind::Label: {
        auto& label = static_cast<forms::Label&>(c);
        auto* l = static_cast<QLabel*>(w);
        if (l->wordWrap() == label.AutoSize) {
            l->setWordWrap(!label.AutoSize);
            sizeLabel(label, l, twips);
        }
        break;
    }
    case Kind::Line:
        static_cast<LineWidget*>(w)->place(twips);
        break;
    default:
        break;
    }
}

void mirrorText(forms::Control& c, QWidget* w, const Twips& twips) {
    switch (c.kind()) {
    case Kind::Label: {
        auto& label = static_cast<forms::Label&>(c);
        static_cast<QLabel*>(w)->setText(qs(label.Caption()));
        sizeLabel(label, static_cast<QLabel*>(w), twips);
        break;
    }
    case Kind::TextBox:
        mirrorTextBox(static_cast<forms::TextBox&>(c), static_cast<QLineEdit*>(w));
        break;
    case Kind::CheckBox: {
        int v = static_cast<forms::CheckBox&>(c).Value();
        static_cast<QCheckBox*>(w)->setCheckState(v == 1 ? Qt::Checked : v == 2 ? Qt::PartiallyChecked : Qt::Unchecked);
        break;
    }
    case Kind::Browser: {
        const std::string& path = static_cast<forms::Browser&>(c).location();
        static_cast<QTextBrowser*>(w)->setSource(path.empty() ? QUrl() : QUrl::fromLocalFile(qs(path)));
        break;
    }
    default:
        break;
    }
}

void mirrorGeometry(forms::Control& c, QWidget* w, const Twips& twips) {
    switch (c.kind()) {
    case Kind::Line:
        static_cast<LineWidget*>(w)->place(twips);
        return;
    case Kind::Label:
        if (static_cast<forms::Label&>(c).AutoSize) {
            w->move(twips.controlRect(c).topLeft());
            return;
        }
        break;
    case Kind::Grid:
        w->setGeometry(twips.controlRect(c));
        static_cast<GridView*>(w)->setOriginTwips(absoluteTwips(c));
        return;
    default:
        break;
    }
    w->setGeometry(twips.controlRect(c));
}

} // namespace

QWidget* createControlWidget(QtHost& host, forms::Control& c, QWidget* parent) {
    QWidget* w = nullptr;
    switch (c.kind()) {
    case Kind::Frame:
        w = new QGroupBox(parent);
        break;
    case Kind::Label: {
        auto* l = new QLabel(parent);
        l->setTextFormat(Qt::PlainText);
        l->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        l->setWordWrap(!static_cast<forms::Label&>(c).AutoSize);
        w = l;
        break;
    }
    case Kind::TextBox: {
        auto* e = new QLineEdit(parent);
        e->setAcceptDrops(false);
        e->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        e->setContextMenuPolicy(Qt::PreventContextMenu);
        w = e;
        break;
    }
    case Kind::Button: {
        auto* b = new QPushButton(parent);
        b->setAutoDefault(false);
        w = b;
        break;
    }
    case Kind::CheckBox:
        w = new QCheckBox(parent);
        break;
    case Kind::ListBox: {
        auto* l = new QListWidget(parent);
        l->setSelectionMode(QAbstractItemView::SingleSelection);
        l->setEditTriggers(QAbstractItemView::NoEditTriggers);
        l->setUniformItemSizes(true);
        l->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        l->setAutoScroll(false);
        w = l;
        break;
    }
    case Kind::Grid:
        w = new GridView(host, static_cast<forms::Grid&>(c), parent);
        break;
    case Kind::Shape:
        w = new ShapeWidget(c, parent);
        break;
    case Kind::Line:
        w = new LineWidget(c, parent);
        break;
    case Kind::PictureBox:
        w = new PictureWidget(c, parent);
        break;
    case Kind::Browser: {
        auto* b = new QTextBrowser(parent);
        b->setOpenExternalLinks(true);
        w = b;
        break;
    }
    case Kind::Form:
        w = new QWidget(parent);
        break;
    }
    // The runtime decides where the focus is; Qt only shows it.
    w->setFocusPolicy(Qt::NoFocus);
    w->setObjectName(qs(c.name()));
    return w;
}

void mirror(forms::Control& c, QWidget* w, Prop what, const Twips& twips) {
    switch (what) {
    case Prop::Geometry:
        mirrorGeometry(c, w, twips);
        break;
    case Prop::Visible:
        w->setVisible(c.Visible());
        break;
    case Prop::Enabled:
        w->setEnabled(c.Enabled());
        break;
    case Prop::Colors:
        mirrorColors(c, w);
        break;
    case Prop::Font:
        w->setFont(toQFont(c.font()));
        if (c.kind() == Kind::Label) sizeLabel(static_cast<forms::Label&>(c), static_cast<QLabel*>(w), twips);
        if (c.kind() == Kind::Grid) static_cast<GridView*>(w)->viewport()->update();
        break;
    case Prop::Text:
        mirrorText(c, w, twips);
        break;
    case Prop::Selection:
        if (c.kind() == Kind::TextBox) mirrorTextBox(static_cast<forms::TextBox&>(c), static_cast<QLineEdit*>(w));
        if (c.kind() == Kind::ListBox) mirrorListSelection(static_cast<forms::ListBox&>(c), static_cast<QListWidget*>(w));
        break;
    case Prop::Items:
        if (c.kind() == Kind::ListBox) {
            mirrorListItems(static_cast<forms::ListBox&>(c), static_cast<QListWidget*>(w));
            mirrorListSelection(static_cast<forms::ListBox&>(c), static_cast<QListWidget*>(w));
        }
        break;
    case Prop::Picture:
        w->update();
        break;
    case Prop::Other:
        mirrorFields(c, w, twips);
        break;
    case Prop::Name:
        mirrorAccessibleName(c, w);
        break;
    case Prop::Focus:
        if (c.kind() == Kind::ListBox) mirrorListSelection(static_cast<forms::ListBox&>(c), static_cast<QListWidget*>(w));
        break;
    }
}

// ---- drawn controls ---------------------------------------------------------------

void ShapeWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QPalette& pal = QApplication::palette();
    p.fillRect(rect(), toQColor(control_.BackColor(), pal));
    p.setPen(toQColor(control_.ForeColor(), pal));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
}

LineWidget::LineWidget(forms::Control& c, QWidget* parent) : QWidget(parent), control_(c) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void LineWidget::place(const Twips& twips) {
    auto& line = static_cast<forms::Line&>(control_);
    const QPoint abs = absoluteTwips(control_);
    const QPoint parent = abs - QPoint(line.Left(), line.Top());
    auto at = [&](int tx, int ty) {
        return QPoint(twips.px(parent.x() + tx) - twips.px(parent.x()), twips.px(parent.y() + ty) - twips.px(parent.y()));
    };
    const QPoint a = at(line.Left(), line.Top()), b = at(line.X2, line.Y2);
    const int pen = std::max(1, line.BorderWidth);
    const QRect box = QRect(a, b).normalized().adjusted(-pen, -pen, pen, pen);
    const QPoint from = a - box.topLeft(), to = b - box.topLeft();
    if (box == geometry() && from == from_ && to == to_) return;
    setGeometry(box);
    from_ = from;
    to_ = to;
    update();
}

void LineWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setPen(QPen(toQColor(control_.ForeColor(), QApplication::palette()), std::max(1, static_cast<forms::Line&>(control_).BorderWidth)));
    p.drawLine(from_, to_);
}

void PictureWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QPalette& pal = QApplication::palette();
    if (!forms::isSystemColor(control_.BackColor())) p.fillRect(rect(), toQColor(control_.BackColor(), pal));
    const auto& pic = static_cast<forms::PictureBox&>(control_).picture();
    if (auto* q = dynamic_cast<const QtPicture*>(pic.get())) {
        p.drawImage(QPoint(0, 0), q->image());
    } else if (pic) {
        // A picture this face did not load: only its size is known.
        p.setPen(pal.color(QPalette::Mid));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

} // namespace qtface

#include "qt/qt_dialogs.h"

#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStringList>

#include "qt/colors_fonts.h"

namespace qtface {

namespace {
QWidget* parentWindow() { return QApplication::activeWindow(); }
} // namespace

void QtDialogs::prepare() const {
    if (beforeModal_) beforeModal_();
}

int QtDialogs::MsgBox(const std::string& text, int buttons, const std::string& title) {
    prepare();
    QMessageBox box(QMessageBox::NoIcon, QString::fromStdString(title), QString::fromStdString(text), QMessageBox::NoButton,
                    parentWindow());
    box.setTextFormat(Qt::PlainText);
    struct Choice { QMessageBox::StandardButton button; int result; };
    std::vector<Choice> choices;
    const bool second = buttons & forms::vbDefaultButton2;
    switch (buttons & ~forms::vbDefaultButton2) {
    case forms::vbOKCancel: choices = {{QMessageBox::Ok, forms::vbOK}, {QMessageBox::Cancel, forms::vbCancel}}; break;
    case forms::vbYesNo: choices = {{QMessageBox::Yes, forms::vbYes}, {QMessageBox::No, forms::vbNo}}; break;
    default: choices = {{QMessageBox::Ok, forms::vbOK}}; break;
    }
    for (const Choice& c : choices) box.addButton(c.button);
    const Choice& safe = second && choices.size() > 1 ? choices[1] : choices.front();
    box.setDefaultButton(safe.button);
    if (second) box.setEscapeButton(safe.button);
    box.exec();
    QAbstractButton* clicked = box.clickedButton();
    for (const Choice& c : choices)
        if (clicked == box.button(c.button)) return c.result;
    // Closed without a button: the answer Esc gives.
    return second ? safe.result : choices.back().result;
}

std::string QtDialogs::InputBox(const std::string& prompt, const std::string& title) {
    prepare();
    QInputDialog dlg(parentWindow());
    dlg.setWindowTitle(QString::fromStdString(title));
    dlg.setLabelText(QString::fromStdString(prompt));
    dlg.setInputMode(QInputDialog::TextInput);
    dlg.setTextValue(QString());
    if (dlg.exec() != QDialog::Accepted) return {};
    return dlg.textValue().toStdString();
}

QString QtDialogs::qtFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split(QLatin1Char('|'));
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        // "*.*" means every file on the system the filter was written for; to Qt
        // it means names with a dot.
        for (QString& p : patterns) p = p.trimmed() == QStringLiteral("*.*") ? QStringLiteral("*") : p.trimmed();
        QString desc = parts[i].trimmed();
        // A description that already shows its patterns keeps them; Qt reads the last parentheses.
        if (desc.contains(QLatin1Char('('))) desc = desc.left(desc.indexOf(QLatin1Char('('))).trimmed();
        out << QStringLiteral("%1 (%2)").arg(desc, patterns.join(QLatin1Char(' ')));
    }
    return out.join(QStringLiteral(";;"));
}

std::optional<std::string> QtDialogs::ShowOpen(const std::string& filter) {
    prepare();
    const QString path = QFileDialog::getOpenFileName(parentWindow(), QString(), QString(), qtFilter(filter));
    if (path.isEmpty()) return std::nullopt;
    return path.toStdString();
}

std::optional<std::string> QtDialogs::ShowSave(const std::string& name, const std::string& filter) {
    prepare();
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty()) folder = QDir::homePath();
    const QString start = QDir(folder).filePath(QString::fromStdString(name));
    const QString path = QFileDialog::getSaveFileName(parentWindow(), QString(), start, qtFilter(filter));
    if (path.isEmpty()) return std::nullopt;
    return path.toStdString();
}

std::optional<forms::Color> QtDialogs::ShowColor() {
    prepare();
    const QColor c = QColorDialog::getColor(Qt::white, parentWindow());
    if (!c.isValid()) return std::nullopt;
    return fromQColor(c);
}

} // namespace qtface

// Quillmere on the desktop: the forms runtime shown with Qt, the main window
// made and started, and every road out of the program running its exit steps.
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QPainter>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "forms/locale_currency.h"
#include "forms/runtime.h"
#include "forms/std_files.h"
#include "mainwindow/frm_main.h"
#include "qt/form_window.h"
#include "qt/locale_dates.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_host.h"
#include "qt/qt_pictures.h"
#include "qt/qt_pdf.h"
#include "qt/qt_printer.h"
#include "qt/qt_progress.h"
#include "qt/qt_program.h"
#include "qt/session_end.h"
#include "qt/single_instance.h"
#include "storage/places.h"

namespace {

// The installed icon (share/icons/hicolor/48x48/apps/quillmere.png), through
// the icon theme or next to the program, else a plain drawn one.
QIcon applicationIcon() {
    QIcon themed = QIcon::fromTheme(QStringLiteral("quillmere"));
    if (!themed.isNull()) return themed;
    const QString installed = QDir(QCoreApplication::applicationDirPath())
                                  .filePath(QStringLiteral("../share/icons/hicolor/48x48/apps/quillmere.png"));
    if (QFileInfo::exists(installed)) return QIcon(installed);
    QPixmap pm(48, 48);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(0x2E, 0x7D, 0x32));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(QRectF(2, 2, 44, 44), 8, 8);
    p.setPen(Qt::white);
    QFont f = p.font();
    f.setPixelSize(30);
    f.setBold(true);
    p.setFont(f);
    p.drawText(pm.rect(), Qt::AlignCenter, QStringLiteral("Q"));
    p.end();
    return QIcon(pm);
}

} // namespace

int main(int argc, char** argv) {
    const std::int64_t startedAt = static_cast<std::int64_t>(std::time(nullptr));
    QApplication app(argc, argv);
    // Qt takes the user's locale for the C library; numbers in files stay in C.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QString::fromLatin1(qm::kAppTitle));
    QApplication::setApplicationVersion(QStringLiteral("%1.%2.%3").arg(QM_VERSION_MAJOR).arg(QM_VERSION_MINOR).arg(QM_VERSION_PATCH));
    QApplication::setDesktopFileName(QStringLiteral("quillmere"));
    QApplication::setWindowIcon(applicationIcon());
    // The program ends by its own exit steps only.
    QApplication::setQuitOnLastWindowClosed(false);

    // One window per data folder: a second start only brings the first to the
    // front. It comes before anything that touches the folder, which the
    // running window owns.
    const storage::Places places = storage::shippedPlaces();
    qtface::SingleInstance single(QString::fromStdString(places.dataFolder));
    if (!single.claim()) return 0;

    forms::Runtime runtime;
    qtface::QtHost host(runtime);
    runtime.setHost(&host);

    // A first start after the install finds no data folder: it is made, with
    // the shipped files from share/quillmere/ beside the program's folder.
    // Writes that an earlier run could not finish are cleared away.
    const QString share = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../share/quillmere/"));
    const std::string problems = storage::PrepareDataFolder(places.dataFolder, QDir::cleanPath(share).toStdString() + "/");
    if (!problems.empty()) std::fputs(("quillmere: " + problems).c_str(), stderr);
    forms::StdFiles::removeLeftoverTemporaries(places.dataFolder, startedAt);

    forms::StdFiles files;
    qtface::QtDialogs dialogs([&host] { host.sync(); });
    qtface::QtPictures pictures(host.twips());
    qtface::QtPrinter printer(qm::kAppTitle);
    forms::LocaleCurrency currency("");
    currency.setDateRules(qtface::DateRulesOf(QLocale::system()));
    qtface::QtProgram program;
    qtface::QtPdfDocuments documents;
    qtface::QtProgress progress;
    qm::Platform platform{runtime, files, dialogs, pictures, printer, currency, program, places, &documents, &progress};
    qm::modGlobalVars globals;

    qm::frmMain main(platform, globals);
    // A window closed by the window manager, the end of the session or a
    // signal: the same steps as Exit, which run only once. Only the window
    // manager's close may be answered by staying open.
    main.form.CloseRequested = [&] { main.Form_Terminate(); };
    qtface::EndRequests ends(runtime, [&] { runtime.dispatch([&] { main.EndOfSession(); }); });
    single.onRaiseRequest([&] {
        if (qtface::FormWindow* w = host.window(main.form)) qtface::bringToFront(w->window());
    });

    main.Start();
    if (program.endRequested()) return 0;
    return QApplication::exec();
}

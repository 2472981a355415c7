#pragma once
#include <QLockFile>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QLocalServer;
class QWidget;

namespace qtface {

// One running program per data folder. Two windows on one folder would each
// write their own grid and list over the other's at exit, so a second start
// asks the first to come to the front and ends without touching the folder.
//
// The lock and the socket live in the user's runtime folder, named by a hash
// of the data folder's real path: the data folder itself gains no file, and a
// folder synced to another computer carries no lock there. A lock whose holder
// has died (a killed process) is taken over.
class SingleInstance : public QObject {
public:
    explicit SingleInstance(const QString& dataFolder);
    ~SingleInstance() override;

    // Takes the data folder for this process, or, when another process holds
    // it, asks that one to come to the front and answers false: this start
    // must then end. A runtime folder that can't hold a lock lets the start go
    // on, since refusing to start would lock the user out of their data.
    bool claim();

    // Called, in the event loop, whenever a later start asks for the front.
    void onRaiseRequest(std::function<void()> raise) { raise_ = std::move(raise); }

    QString lockPath() const { return base_ + QStringLiteral(".lock"); }
    QString serverName() const { return base_ + QStringLiteral(".socket"); }

private:
    void listen();

    QString base_; // runtime folder + the program's name + the folder's hash; empty without a runtime folder
    std::unique_ptr<QLockFile> lock_;
    QLocalServer* server_ = nullptr;
    std::function<void()> raise_;
};

// Brings a top-level window to the front and asks for the input focus, as far
// as the window manager allows.
void bringToFront(QWidget* window);

} // namespace qtface

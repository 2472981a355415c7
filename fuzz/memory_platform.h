#pragma once
// The program on files held in memory, for the fuzz targets: no disk between
// two runs, and one run takes microseconds. Names follow the rules of the
// file systems the program meets: a name part longer than 255 bytes can't be
// opened.
#include <map>
#include <memory>
#include <string>

#include "forms/ports.h"
#include "forms/runtime.h"
#include "mainwindow/frm_main.h"
#include "support/scripted_platform.h"

namespace fuzzing {

class MemoryFiles : public forms::FilesPort {
public:
    std::unique_ptr<forms::InputStream> openRead(const std::string& path) override;
    std::unique_ptr<forms::OutputStream> openReplace(const std::string& path) override;
    bool exists(const std::string& path) override { return files.count(path) != 0; }
    void remove(const std::string& path) override;
    void removeMatching(const std::string& folder, const std::string& suffix) override;

    std::map<std::string, std::string> files;
};

// Pictures are files of MemoryFiles that start with "PIC"; nothing else is one.
class MemoryPictures : public forms::PicturesPort {
public:
    explicit MemoryPictures(MemoryFiles& files) : files_(files) {}
    std::shared_ptr<forms::Picture> LoadPicture(const std::string& path) override;
    std::shared_ptr<forms::Picture> placeholder() override;
    std::shared_ptr<forms::Picture> applicationIcon() override { return placeholder(); }

private:
    MemoryFiles& files_;
};

inline constexpr const char* kData = "/data/";
inline constexpr const char* kFloppy = "/floppy/";

// One program on its own files.
struct Program {
    explicit Program(MemoryFiles& files);
    forms::Runtime runtime;
    MemoryPictures pictures;
    qmtest::ScriptedDialogs dialogs;
    qmtest::ScriptedPrinter printer;
    forms::LocaleCurrency currency{forms::LocaleCurrency::usRules()};
    qmtest::ScriptedProgram program;
    qm::Platform platform;
    qm::modGlobalVars globals;
    qm::frmMain main;

    void run(const std::function<void()>& f) { runtime.dispatch(f); }
    void exit();
};

// A check that failed: the fuzzer reports it as a crash with this text.
[[noreturn]] void broken(const std::string& what);

} // namespace fuzzing

#pragma once
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "forms/locale_currency.h"
#include "forms/ports.h"
#include "forms/runtime.h"
#include "forms/std_files.h"
#include "mainwindow/frm_main.h"

namespace qmtest {

// A folder of its own for one test, removed at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }
    // The path with a closing "/", as the program's places are written.
    std::string place() const { return path_.string() + "/"; }

private:
    std::filesystem::path path_;
};

// Rows as a category file holds them: the fields of each (as many as it has,
// but at least `width`) encoded and joined by commas, CR LF after each row.
std::string recordLines(const std::vector<std::vector<std::string>>& rows, std::size_t width = 0);

// Bytes of a file, or nothing if it isn't there.
std::optional<std::string> readFile(const std::filesystem::path& p);
void writeFile(const std::filesystem::path& p, const std::string& bytes);

// File name (no folder) -> the contents it has had whole.
using Versions = std::map<std::string, std::set<std::string>>;

// Real files with faults on demand: the operation with the given number (from 0,
// counted over all kinds that are armed) fails, once. Every operation but a read
// is also numbered over the whole run, for a hook that sees it before it runs.
class FaultyFiles : public forms::FilesPort {
public:
    enum Op : unsigned { OpenRead = 1, OpenWrite = 2, Write = 4, Commit = 8, Remove = 16, Read = 32 };
    static const char* opName(Op op);

    std::unique_ptr<forms::InputStream> openRead(const std::string& path) override;
    std::unique_ptr<forms::InputStream> openReadFromDevice(const std::string& path) override;
    std::unique_ptr<forms::OutputStream> openReplace(const std::string& path) override;
    bool exists(const std::string& path) override { return real_.exists(path); }
    std::optional<forms::FileFingerprint> fingerprint(const std::string& path) override { return real_.fingerprint(path); }
    void remove(const std::string& path) override;
    void removeMatching(const std::string& folder, const std::string& suffix) override;

    // Counts operations of these kinds; the one numbered failAt fails.
    void arm(unsigned kinds, long failAt) { kinds_ = kinds; failAt_ = failAt; count_ = 0; }
    void disarm() { kinds_ = 0; failAt_ = -1; }
    long counted() const { return count_; }
    bool fired() const { return fired_; }
    // Files that exist but can never be read (a read error, not a missing file),
    // for as long as they are in this set.
    std::set<std::string> unreadable;
    // Paths that can never be written, as a disk that refuses a name.
    std::set<std::string> unwritable;
    // Paths whose writes stay in memory and never reach the device (a failing
    // or fake-capacity stick): read from the device, they fail.
    std::set<std::string> lostOnDevice;
    // Every armed operation from the one numbered failAt on fails: a disk that stays full.
    bool persistent = false;
    // Called by the streams.
    void check(Op op, const std::string& path);
    // Files' times judged this far ahead of the clock: far ahead, every state is proven by its time.
    void setClockAhead(std::int64_t ns) { real_.clockAheadNs = ns; }
    // No file shows a state: the program then knows no file's content and reads
    // and writes every file it is asked to, the same operations in every run.
    void tellNoStates() { real_ = forms::StdFiles(false); }

    // Called with the number and kind of every operation but a read, before it runs.
    std::function<void(long n, Op op, const std::string& path)> hook;
    long operations() const { return operations_; }
    // The write with this number puts half its bytes into the file before its hook runs.
    long cutWriteAt = -1;
    // When set, every content put in place whole is recorded under its file name.
    bool recordCommits = false;
    Versions committed;

private:
    forms::StdFiles real_;
    unsigned kinds_ = 0;
    long failAt_ = -1;
    long count_ = 0;
    long operations_ = 0;
    bool fired_ = false;
};

struct Message {
    std::string text;
    int buttons;
    std::string title;
};

class ScriptedDialogs : public forms::DialogsPort {
public:
    int MsgBox(const std::string& text, int buttons, const std::string& title) override;
    std::string InputBox(const std::string& prompt, const std::string& title) override;
    std::optional<std::string> ShowOpen(const std::string& filter) override;
    std::optional<forms::Color> ShowColor() override;
    std::optional<std::string> ShowSave(const std::string& name, const std::string& filter) override;

    // Answers, in order; a box with no answer queued takes its first button, an input box "".
    std::deque<int> msgAnswers;
    std::deque<std::string> inputAnswers;
    std::deque<std::optional<std::string>> openAnswers;
    std::deque<std::optional<forms::Color>> colorAnswers;
    std::deque<std::optional<std::string>> saveAnswers;
    std::vector<Message> messages;
    std::vector<Message> prompts; // input boxes: text, 0, title
    std::vector<std::string> filters;
    // The texts of the message boxes shown, in order.
    std::vector<std::string> texts() const;
};

class FakePicture : public forms::Picture {
public:
    FakePicture(std::string path, int w, int h) : path(std::move(path)), w_(w), h_(h) {}
    int widthTwips() const override { return w_; }
    int heightTwips() const override { return h_; }
    std::string path;
    // The path of a picture made here, "<none>" for any other.
    static std::string pathOf(const std::shared_ptr<forms::Picture>& p) {
        auto* fake = dynamic_cast<const FakePicture*>(p.get());
        return fake ? fake->path : "<none>";
    }

private:
    int w_, h_;
};

// Pictures are files whose content starts "PIC w h"; anything else is no picture.
class ScriptedPictures : public forms::PicturesPort {
public:
    std::shared_ptr<forms::Picture> LoadPicture(const std::string& path) override;
    std::shared_ptr<forms::Picture> placeholder() override;
    std::shared_ptr<forms::Picture> applicationIcon() override { return std::make_shared<FakePicture>("<icon>", 720, 720); }
    std::vector<std::string> loads;
};

class ScriptedPrinter : public forms::PrinterPort {
public:
    void Print(const std::string& text, bool openEnd) override;
    void EndDoc() override;
    // Lines of the finished jobs, and of the one being printed.
    std::vector<std::vector<std::string>> jobs;
    std::vector<std::string> current;
    bool pending = false;
    bool lineOpen = false;
    long failAfter = -1; // fail at the Print call with this number
    long prints = 0;
};

class ScriptedProgram : public forms::ProgramPort {
public:
    bool startSystemInfo() override { ++sysInfoStarts; return hasSysInfo; }
    void endProgram() override { ++ends; }
    bool hasSysInfo = false;
    int sysInfoStarts = 0;
    int ends = 0;
};

// A whole program on temporary folders with the scripted platform.
class Harness {
public:
    // On its own temporary folders, unless others are named.
    explicit Harness(const std::string& dataFolder = "", const std::string& floppyRoot = "");

    TempDir dataDir, floppyDir;
    forms::Runtime runtime;
    FaultyFiles files;
    ScriptedDialogs dialogs;
    ScriptedPictures pictures;
    ScriptedPrinter printer;
    forms::LocaleCurrency currency{forms::LocaleCurrency::usRules()};
    ScriptedProgram program;
    qm::Platform platform;
    qm::modGlobalVars globals;
    std::unique_ptr<qm::frmMain> main; // last: gone before the platform it uses

    // Makes frmMain on the scripted platform, not yet started.
    qm::frmMain& make();
    // make(), then its start (load, show, first focus).
    qm::frmMain& start();
    qm::frmMain& m() { return *main; }

    // Paths in the places the program was given (the temporary folders unless others were named).
    std::filesystem::path data(const std::string& name) const { return std::filesystem::path(platform.places.dataFolder) / name; }
    std::filesystem::path floppy(const std::string& name) const { return std::filesystem::path(platform.places.floppyRoot) / name; }
    // The bytes of a file in the data folder, "<missing>" if it isn't there.
    std::string text(const std::string& name) const { return readFile(data(name)).value_or("<missing>"); }

    // User input, each as one event with its focus events after it.
    void click(forms::Button& b);
    void selectCategory(int index);       // a click on a list entry: the list gains the focus, then the selection
    void focus(forms::Control& c);        // the user moves the focus (Tab or mouse)
    void menu(const std::string& entry);  // a click on the main window's menu entry of this name
    void run(const std::function<void()>& f) { runtime.dispatch(f); }

    // Writes an index and category files into the data folder.
    void writeIndex(const std::vector<std::string>& names, const std::string& count = "");
    void writeCategory(const std::string& name, const std::vector<std::vector<std::string>>& items);
    struct Category {
        std::string name;
        std::vector<std::vector<std::string>> items; // up to seven cells each
    };
    // The index of these categories, in this order, and a file for each.
    void writeCategories(const std::vector<Category>& categories);
    // start(), then entry k of the list selected as the program selects it (no gain of focus).
    qm::frmMain& startAndOpen(int entry);
    // start(), then a user's click on entry k (selectCategory).
    qm::frmMain& startAndClick(int entry);
    // A program started anew on the same folders, with the files this one left.
    std::unique_ptr<Harness> restart() const;
};

extern const char* const kHeadingLine;

// Drill, Saw and Lathe: three items with empty cells, money with cents and without.
extern const std::vector<std::vector<std::string>> kGarage;

} // namespace qmtest

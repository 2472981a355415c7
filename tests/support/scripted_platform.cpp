#include "support/scripted_platform.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>

#include "forms/failure.h"
#include "forms/input.h"
#include "storage/field_rules.h"

namespace qmtest {

namespace fs = std::filesystem;

const char* const kHeadingLine =
    "Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty Expiration,Serial Number / Description";

TempDir::TempDir() {
    static std::mt19937_64 rng{std::random_device{}()};
    for (;;) {
        path_ = fs::temp_directory_path() / ("qmtest-" + std::to_string(rng()));
        if (fs::create_directory(path_)) break;
    }
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
}

std::string recordLines(const std::vector<std::vector<std::string>>& rows, std::size_t width) {
    std::string text;
    for (const auto& row : rows) {
        for (std::size_t c = 0; c < std::max(width, row.size()); ++c) {
            if (c) text += ',';
            if (c < row.size()) storage::AppendField(text, row[c]);
        }
        text += "\r\n";
    }
    return text;
}

std::optional<std::string> readFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

void writeFile(const fs::path& p, const std::string& bytes) {
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << bytes;
}

// ---- FaultyFiles -----------------------------------------------------------------

const char* FaultyFiles::opName(Op op) {
    switch (op) {
    case OpenRead: return "open for reading";
    case OpenWrite: return "open for writing";
    case Write: return "write";
    case Commit: return "close and rename";
    case Remove: return "remove";
    case Read: return "read";
    }
    return "?";
}

void FaultyFiles::check(Op op, const std::string& path) {
    if (op != Read) {
        const long n = operations_++;
        if (hook) hook(n, op, path);
    }
    if (!(kinds_ & op)) return;
    long n = count_++;
    if (n == failAt_ || (persistent && failAt_ >= 0 && n > failAt_)) {
        fired_ = true;
        throw forms::Failure(std::string("injected fault: ") + opName(op) + " " + path);
    }
}

namespace {

class FaultyInput : public forms::InputStream {
public:
    FaultyInput(FaultyFiles& owner, std::unique_ptr<forms::InputStream> in, std::string path)
        : owner_(owner), in_(std::move(in)), path_(std::move(path)) {}
    std::size_t read(char* buf, std::size_t n) override {
        owner_.check(FaultyFiles::Read, path_);
        return in_->read(buf, n);
    }
    std::optional<forms::FileFingerprint> state() const override { return in_->state(); }

private:
    FaultyFiles& owner_;
    std::unique_ptr<forms::InputStream> in_;
    std::string path_;
};

class FaultyOutput : public forms::OutputStream {
public:
    FaultyOutput(FaultyFiles& owner, std::unique_ptr<forms::OutputStream> out, std::string path)
        : owner_(owner), out_(std::move(out)), path_(std::move(path)) {}
    void write(const char* data, std::size_t n) override {
        // A write cut short by the end of the process: half its bytes reach the file.
        if (owner_.operations() == owner_.cutWriteAt) out_->write(data, n / 2);
        owner_.check(FaultyFiles::Write, path_);
        out_->write(data, n);
        if (owner_.recordCommits) content_.append(data, n);
    }
    void commit() override {
        owner_.check(FaultyFiles::Commit, path_);
        out_->commit();
        if (owner_.recordCommits) owner_.committed[fs::path(path_).filename().string()].insert(content_);
    }

private:
    FaultyFiles& owner_;
    std::unique_ptr<forms::OutputStream> out_;
    std::string path_, content_;
};

} // namespace

std::unique_ptr<forms::InputStream> FaultyFiles::openRead(const std::string& path) {
    check(OpenRead, path);
    if (unreadable.count(path)) throw forms::Failure("read error: " + path);
    return std::make_unique<FaultyInput>(*this, real_.openRead(path), path);
}

std::unique_ptr<forms::InputStream> FaultyFiles::openReadFromDevice(const std::string& path) {
    if (lostOnDevice.count(path)) throw forms::Failure("read error on the device: " + path);
    check(OpenRead, path);
    return std::make_unique<FaultyInput>(*this, real_.openReadFromDevice(path), path);
}

std::unique_ptr<forms::OutputStream> FaultyFiles::openReplace(const std::string& path) {
    if (unwritable.count(path)) throw forms::Failure("name refused: " + path);
    check(OpenWrite, path);
    return std::make_unique<FaultyOutput>(*this, real_.openReplace(path), path);
}

void FaultyFiles::remove(const std::string& path) {
    check(Remove, path);
    real_.remove(path);
}

void FaultyFiles::removeMatching(const std::string& folder, const std::string& suffix) {
    check(Remove, folder + "*" + suffix);
    real_.removeMatching(folder, suffix);
}

// ---- dialogs, pictures, printer ----------------------------------------------------

namespace {
// The next queued answer, if any.
template <class T> std::optional<T> takeNext(std::deque<T>& answers) {
    if (answers.empty()) return std::nullopt;
    T a = std::move(answers.front());
    answers.pop_front();
    return a;
}
} // namespace

int ScriptedDialogs::MsgBox(const std::string& text, int buttons, const std::string& title) {
    messages.push_back({text, buttons, title});
    const int set = buttons & ~forms::vbDefaultButton2;
    return takeNext(msgAnswers).value_or(set != forms::vbYesNo ? forms::vbOK : buttons & forms::vbDefaultButton2 ? forms::vbNo : forms::vbYes);
}

std::string ScriptedDialogs::InputBox(const std::string& prompt, const std::string& title) {
    prompts.push_back({prompt, 0, title});
    return takeNext(inputAnswers).value_or("");
}

std::optional<std::string> ScriptedDialogs::ShowOpen(const std::string& filter) {
    filters.push_back(filter);
    return takeNext(openAnswers).value_or(std::nullopt);
}

std::optional<std::string> ScriptedDialogs::ShowSave(const std::string& name, const std::string&) {
    filters.push_back(name);
    return takeNext(saveAnswers).value_or(std::nullopt);
}

std::optional<forms::Color> ScriptedDialogs::ShowColor() { return takeNext(colorAnswers).value_or(std::nullopt); }

std::vector<std::string> ScriptedDialogs::texts() const {
    std::vector<std::string> t;
    for (const auto& m : messages) t.push_back(m.text);
    return t;
}

std::shared_ptr<forms::Picture> ScriptedPictures::LoadPicture(const std::string& path) {
    loads.push_back(path);
    auto bytes = readFile(path);
    if (!bytes) throw forms::FileNotFound(path);
    std::istringstream in(*bytes);
    std::string tag;
    int w = 0, h = 0;
    if (!(in >> tag >> w >> h) || tag != "PIC") throw forms::Failure("invalid picture: " + path);
    return std::make_shared<FakePicture>(path, w, h);
}

std::shared_ptr<forms::Picture> ScriptedPictures::placeholder() { return std::make_shared<FakePicture>("<placeholder>", 1440, 1440); }

void ScriptedPrinter::Print(const std::string& text, bool openEnd) {
    if (failAfter >= 0 && prints >= failAfter) throw forms::Failure("printer error");
    ++prints;
    pending = true;
    if (!lineOpen) current.emplace_back();
    current.back() += text;
    lineOpen = openEnd;
}

void ScriptedPrinter::EndDoc() {
    if (!pending) return;
    jobs.push_back(current);
    current.clear();
    pending = false;
    lineOpen = false;
}

// ---- Harness ---------------------------------------------------------------------

Harness::Harness(const std::string& dataFolder, const std::string& floppyRoot)
    : platform{runtime, files, dialogs, pictures, printer, currency, program,
               {dataFolder.empty() ? dataDir.place() : dataFolder, floppyRoot.empty() ? floppyDir.place() : floppyRoot}} {}

qm::frmMain& Harness::make() {
    main = std::make_unique<qm::frmMain>(platform, globals);
    return *main;
}

qm::frmMain& Harness::start() {
    make().Start();
    return *main;
}

void Harness::click(forms::Button& b) { forms::input::click(runtime, b); }

void Harness::selectCategory(int index) { forms::input::selectEntry(runtime, main->lstCategory, index); }

void Harness::focus(forms::Control& c) { forms::input::focus(runtime, c); }

void Harness::menu(const std::string& entry) { forms::input::menu(runtime, *main->form.menuBar().find(entry)); }

void Harness::writeIndex(const std::vector<std::string>& names, const std::string& count) {
    writeFile(data("NumCats.csv"), (count.empty() ? " " + std::to_string(names.size()) + " " : count) + "\r\n");
    std::string list;
    for (const auto& n : names) list += storage::EncodeField(n) + "\r\n";
    writeFile(data("CatFiles.csv"), list);
}

void Harness::writeCategory(const std::string& name, const std::vector<std::vector<std::string>>& items) {
    writeFile(data(name + ".csv"), std::string(kHeadingLine) + "\r\n" + recordLines(items, 7));
}

void Harness::writeCategories(const std::vector<Category>& categories) {
    std::vector<std::string> names;
    for (const auto& c : categories) {
        names.push_back(c.name);
        writeCategory(c.name, c.items);
    }
    writeIndex(names);
}

qm::frmMain& Harness::startAndOpen(int entry) {
    start();
    run([&] { main->lstCategory.setSelected(entry); });
    return *main;
}

qm::frmMain& Harness::startAndClick(int entry) {
    start();
    selectCategory(entry);
    return *main;
}

std::unique_ptr<Harness> Harness::restart() const {
    auto again = std::make_unique<Harness>(platform.places.dataFolder, platform.places.floppyRoot);
    again->start();
    return again;
}

const std::vector<std::vector<std::string>> kGarage = {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                                                       {"Saw", "1000", "999.99", "Shop", "2002", "", "SN2"},
                                                       {"Lathe", "5", "5", "", "", "", "abc"}};

} // namespace qmtest

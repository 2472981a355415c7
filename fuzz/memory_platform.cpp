#include "memory_platform.h"

#include <cstdio>
#include <cstdlib>

#include "forms/failure.h"

namespace fuzzing {

namespace {

bool nameTooLong(const std::string& path) {
    std::size_t start = 0;
    for (;;) {
        std::size_t slash = path.find('/', start);
        std::size_t end = slash == std::string::npos ? path.size() : slash;
        if (end - start > 255) return true;
        if (slash == std::string::npos) return false;
        start = slash + 1;
    }
}

class MemoryInput : public forms::InputStream {
public:
    explicit MemoryInput(std::string bytes) : bytes_(std::move(bytes)) {}
    std::size_t read(char* buf, std::size_t n) override {
        std::size_t k = std::min(n, bytes_.size() - pos_);
        bytes_.copy(buf, k, pos_);
        pos_ += k;
        return k;
    }

private:
    std::string bytes_;
    std::size_t pos_ = 0;
};

class MemoryOutput : public forms::OutputStream {
public:
    MemoryOutput(MemoryFiles& owner, std::string path) : owner_(owner), path_(std::move(path)) {}
    void write(const char* data, std::size_t n) override { bytes_.append(data, n); }
    void commit() override { owner_.files[path_] = std::move(bytes_); }

private:
    MemoryFiles& owner_;
    std::string path_;
    std::string bytes_;
};

} // namespace

std::unique_ptr<forms::InputStream> MemoryFiles::openRead(const std::string& path) {
    if (nameTooLong(path)) throw forms::Failure("file name too long: " + path);
    auto it = files.find(path);
    if (it == files.end()) throw forms::FileNotFound(path);
    return std::make_unique<MemoryInput>(it->second);
}

std::unique_ptr<forms::OutputStream> MemoryFiles::openReplace(const std::string& path) {
    if (nameTooLong(path)) throw forms::Failure("file name too long: " + path);
    return std::make_unique<MemoryOutput>(*this, path);
}

void MemoryFiles::remove(const std::string& path) {
    if (!files.erase(path)) throw forms::FileNotFound(path);
}

void MemoryFiles::removeMatching(const std::string& folder, const std::string& suffix) {
    bool any = false;
    for (auto it = files.begin(); it != files.end();) {
        const std::string& p = it->first;
        bool match = p.size() >= folder.size() + suffix.size() && p.compare(0, folder.size(), folder) == 0 &&
                     p.find('/', folder.size()) == std::string::npos &&
                     p.compare(p.size() - suffix.size(), suffix.size(), suffix) == 0;
        if (match) {
            it = files.erase(it);
            any = true;
        } else {
            ++it;
        }
    }
    if (!any) throw forms::FileNotFound(folder + "*" + suffix);
}

std::shared_ptr<forms::Picture> MemoryPictures::LoadPicture(const std::string& path) {
    auto it = files_.files.find(path);
    if (it == files_.files.end()) throw forms::FileNotFound(path);
    if (it->second.rfind("PIC", 0) != 0) throw forms::Failure("invalid picture: " + path);
    return std::make_shared<qmtest::FakePicture>(path, 1440, 1440);
}

std::shared_ptr<forms::Picture> MemoryPictures::placeholder() {
    return std::make_shared<qmtest::FakePicture>("<placeholder>", 1440, 1440);
}

Program::Program(MemoryFiles& files)
    : pictures(files), platform{runtime, files, dialogs, pictures, printer, currency, program, {kData, kFloppy}},
      main(platform, globals) {}

void Program::exit() { run([this] { main.cmdExit_Click(); }); }

void broken(const std::string& what) {
    std::fprintf(stderr, "broken: %s\n", what.c_str());
    std::abort();
}

} // namespace fuzzing

#include "forms/std_files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace forms {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTempMark = "quillmere-tmp-";

std::int64_t nanoseconds(const timespec& t) { return static_cast<std::int64_t>(t.tv_sec) * 1'000'000'000 + t.tv_nsec; }

[[noreturn]] void fail(const std::string& what, const std::string& path, int err) {
    throw Failure(what + " " + path + ": " + std::strerror(err));
}

FileFingerprint fingerprintOf(const struct stat& st, std::int64_t clockAheadNs) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    FileFingerprint fp;
    fp.device = static_cast<std::uint64_t>(st.st_dev);
    fp.inode = static_cast<std::uint64_t>(st.st_ino);
    fp.size = static_cast<std::uint64_t>(st.st_size);
    fp.mtimeNs = nanoseconds(st.st_mtim);
    fp.ctimeNs = nanoseconds(st.st_ctim);
    fp.settled = TimesSettled(fp.mtimeNs, fp.ctimeNs, nanoseconds(now) + clockAheadNs);
    return fp;
}

class StdInput : public InputStream {
public:
    StdInput(std::FILE* f, std::optional<FileFingerprint> state) : f_(f), state_(state) {}
    ~StdInput() override { std::fclose(f_); }
    std::size_t read(char* buf, std::size_t n) override {
        std::size_t got = std::fread(buf, 1, n, f_);
        if (got < n && std::ferror(f_)) throw Failure(std::string("read error: ") + std::strerror(errno));
        return got;
    }
    std::optional<FileFingerprint> state() const override { return state_; }
    std::FILE* file() const { return f_; }

private:
    std::FILE* f_;
    std::optional<FileFingerprint> state_;
};

void syncFolder(const std::string& path) {
    const std::string folder = fs::path(path).parent_path().string();
    const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    (void)::fsync(fd);
    ::close(fd);
}

class StdOutput : public OutputStream {
public:
    StdOutput(std::FILE* f, std::string temp, std::string target) : f_(f), temp_(std::move(temp)), target_(std::move(target)) {}
    ~StdOutput() override {
        if (f_) std::fclose(f_);
        if (!committed_) ::unlink(temp_.c_str());
    }
    void write(const char* data, std::size_t n) override {
        if (!f_) throw Failure("file is closed");
        if (n && std::fwrite(data, 1, n, f_) != n) fail("write error on", target_, errno);
    }
    void commit() override {
        if (!f_) throw Failure("file is closed");
        std::FILE* f = f_;
        f_ = nullptr;
        bool ok = std::fflush(f) == 0 && ::fsync(::fileno(f)) == 0;
        int err = errno;
        if (std::fclose(f) != 0 && ok) { ok = false; err = errno; }
        if (!ok) fail("write error on", target_, err);
        if (std::rename(temp_.c_str(), target_.c_str()) != 0) fail("can't replace", target_, errno);
        committed_ = true;
        // The new name is in the folder's own data: flushed too. The file is in
        // place whatever this meets, so a failure here is no failure of the commit.
        syncFolder(target_);
    }

private:
    std::FILE* f_;
    std::string temp_, target_;
    bool committed_ = false;
};

} // namespace

std::string StdFiles::temporaryName(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    fs::path p(path);
    // Independent of the file's own name, so that a name near the length limit still works.
    std::string name = std::string(".") + kTempMark + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    return (p.parent_path() / name).string();
}

bool StdFiles::isTemporaryName(const std::string& fileName) {
    return fileName.rfind(std::string(".") + kTempMark, 0) == 0;
}

int StdFiles::removeLeftoverTemporaries(const std::string& folder, std::int64_t startedAt) {
    const std::string mark = std::string(".") + kTempMark;
    int removed = 0;
    std::error_code ec;
    fs::directory_iterator it(folder, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (name.rfind(mark, 0) != 0) continue;
        // <pid>-<counter>, digits only.
        const std::string rest = name.substr(mark.size());
        const std::size_t dash = rest.find('-');
        auto digits = [](const std::string& t) { return !t.empty() && t.size() <= 18 && t.find_first_not_of("0123456789") == std::string::npos; };
        if (dash == std::string::npos || !digits(rest.substr(0, dash)) || !digits(rest.substr(dash + 1))) continue;
        struct stat st;
        if (::lstat(it->path().c_str(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_mtim.tv_sec >= startedAt) continue;
        // A process that still runs may be writing it: left alone.
        const long pid = std::stol(rest.substr(0, dash));
        if (pid == ::getpid() || (pid > 0 && pid <= INT32_MAX && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH))) continue;
        if (::unlink(it->path().c_str()) == 0) ++removed;
    }
    return removed;
}

// A name with a NUL byte in it would be cut there by the system: it names no file.
static void checkName(const std::string& path) {
    if (path.find('\0') != std::string::npos) throw Failure("a file name can't hold a NUL character");
}

std::unique_ptr<InputStream> StdFiles::openRead(const std::string& path) {
    checkName(path);
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) {
        if (errno == ENOENT) throw FileNotFound(path);
        fail("can't open", path, errno);
    }
    // A folder opens like a file here but can't be read as one.
    struct stat st;
    const bool told = ::fstat(::fileno(f), &st) == 0;
    if (told && S_ISDIR(st.st_mode)) {
        std::fclose(f);
        throw Failure("is a folder: " + path);
    }
    return std::make_unique<StdInput>(f, tellStates_ && told && S_ISREG(st.st_mode) ? std::optional(fingerprintOf(st, clockAheadNs)) : std::nullopt);
}

std::unique_ptr<InputStream> StdFiles::openReadFromDevice(const std::string& path) {
    std::unique_ptr<InputStream> in = openRead(path);
    // Only clean pages can be dropped: the sync makes them so (the commit has
    // synced already; this covers a file written by anyone). A file system that
    // can't do either is read as it is.
    const int fd = ::fileno(static_cast<StdInput&>(*in).file());
    (void)::fsync(fd);
    (void)::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    return in;
}

std::unique_ptr<OutputStream> StdFiles::openReplace(const std::string& path) {
    checkName(path);
    std::error_code ec;
    // A folder in the way can't be replaced by a file.
    if (fs::is_directory(path, ec)) throw Failure("is a folder: " + path);
    std::string temp = temporaryName(path);
    std::FILE* f = std::fopen(temp.c_str(), "wb");
    if (!f) fail("can't create", path, errno);
    // Writers hand over whole chunks: a second buffer here would only copy them again.
    std::setvbuf(f, nullptr, _IONBF, 0);
    return std::make_unique<StdOutput>(f, temp, path);
}

bool StdFiles::exists(const std::string& path) {
    std::error_code ec;
    return fs::exists(path, ec);
}

std::optional<FileFingerprint> fileFingerprint(const std::string& path, std::int64_t clockAheadNs) {
    struct stat st;
    if (path.find('\0') != std::string::npos) return std::nullopt; // names no file, as above
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    return fingerprintOf(st, clockAheadNs);
}

std::optional<FileFingerprint> StdFiles::fingerprint(const std::string& path) {
    return tellStates_ ? fileFingerprint(path, clockAheadNs) : std::nullopt;
}

bool TimesSettled(std::int64_t mtimeNs, std::int64_t ctimeNs, std::int64_t nowNs) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    const bool wholeSeconds = mtimeNs % kSecond == 0 && ctimeNs % kSecond == 0;
    const std::int64_t step = wholeSeconds ? 2 * kSecond : kSecond / 10;
    return std::max(mtimeNs, ctimeNs) < nowNs - step;
}

void StdFiles::remove(const std::string& path) {
    checkName(path);
    if (::unlink(path.c_str()) != 0) {
        if (errno == ENOENT) throw FileNotFound(path);
        fail("can't remove", path, errno);
    }
}

void StdFiles::removeMatching(const std::string& folder, const std::string& suffix) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec), end;
    if (ec) throw FileNotFound(folder + "*" + suffix);
    bool any = false;
    for (; it != end; it.increment(ec)) {
        if (ec) fail("can't list", folder, ec.value());
        const std::string name = it->path().filename().string();
        if (name.size() < suffix.size() || name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0) continue;
        if (!it->is_regular_file(ec)) continue;
        any = true;
        if (::unlink(it->path().c_str()) != 0 && errno != ENOENT) fail("can't remove", it->path().string(), errno);
    }
    if (!any) throw FileNotFound(folder + "*" + suffix);
}

} // namespace forms

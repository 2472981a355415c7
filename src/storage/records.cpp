#include "storage/records.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace storage {

using forms::Failure;

namespace {
// Comma, CR and LF end an unquoted field; one look-up tells them apart from the rest.
struct DelimiterTable {
    bool is[256] = {};
    constexpr DelimiterTable() { is[static_cast<unsigned char>(',')] = is[static_cast<unsigned char>('\r')] = is[static_cast<unsigned char>('\n')] = true; }
};
constexpr DelimiterTable kDelimiters;
inline bool isDelimiter(char c) { return kDelimiters.is[static_cast<unsigned char>(c)]; }

constexpr std::size_t kReadChunk = 64 * 1024;
constexpr std::size_t kWriteChunk = 64 * 1024;
} // namespace

bool NeedsQuotes(std::string_view t) {
    if (t.empty()) return false;
    if (t[0] == ' ' || t[0] == '\t' || t[0] == '"') return true;
    // Every cell of every save passes here: a plain scan, no search per character.
    for (char c : t)
        if (c == ',' || c == '\r' || c == '\n') return true;
    return false;
}

void AppendField(std::string& out, std::string_view t) {
    if (!NeedsQuotes(t)) { out.append(t); return; }
    out += '"';
    for (char c : t) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

std::string EncodeField(std::string_view t) {
    std::string out;
    AppendField(out, t);
    return out;
}

FileTable::~FileTable() { CloseAll(); }

int FileTable::FreeFile() const {
    for (int n = 1; n <= kMaxFiles; ++n)
        if (!open_[static_cast<std::size_t>(n)]) return n;
    throw Failure("too many files");
}

bool FileTable::isOpen(int n) const { return n >= 1 && n <= kMaxFiles && open_[static_cast<std::size_t>(n)] != nullptr; }

FileTable::Open& FileTable::get(int n) {
    if (!isOpen(n)) throw Failure("bad file name or number");
    return *open_[static_cast<std::size_t>(n)];
}

void FileTable::OpenInput(int n, const std::string& path) {
    if (n < 1 || n > kMaxFiles) throw Failure("bad file name or number");
    if (isOpen(n)) throw Failure("file already open");
    auto f = std::make_unique<Open>();
    f->path = path;
    f->in = files_.openRead(path);
    f->buf.resize(kReadChunk);
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::OpenOutput(int n, const std::string& path) {
    if (n < 1 || n > kMaxFiles) throw Failure("bad file name or number");
    if (isOpen(n)) throw Failure("file already open");
    auto f = std::make_unique<Open>();
    f->path = path;
    f->out = files_.openReplace(path);
    f->buf.reserve(kWriteChunk);
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::Close(int n) {
    if (!isOpen(n)) return;
    std::unique_ptr<Open> f = std::move(open_[static_cast<std::size_t>(n)]);
    if (f->out && !f->broken) {
        if (!f->buf.empty()) f->out->write(f->buf.data(), f->buf.size());
        f->out->commit();
    }
}

void FileTable::Abandon(int n) {
    if (!isOpen(n)) return;
    open_[static_cast<std::size_t>(n)].reset();
}

void FileTable::CloseAll() {
    // Files still open when the program ends were never finished: drop them.
    for (auto& f : open_) f.reset();
}

void FileTable::write(Open& f, std::string_view data) {
    if (!f.out) throw Failure("bad file mode");
    if (f.broken) throw Failure("write error on " + f.path);
    try {
        if (f.buf.size() + data.size() > kWriteChunk) {
            if (!f.buf.empty()) f.out->write(f.buf.data(), f.buf.size());
            f.buf.clear();
            if (data.size() > kWriteChunk) { f.out->write(data.data(), data.size()); return; }
        }
        f.buf.insert(f.buf.end(), data.begin(), data.end());
    } catch (...) {
        f.broken = true;
        throw;
    }
}

void FileTable::WriteRawLine(int n, std::string_view line) {
    Open& f = get(n);
    write(f, line);
    write(f, "\r\n");
}

void FileTable::WriteBytes(int n, std::string_view bytes) { write(get(n), bytes); }

void FileTable::WriteLine(int n, std::string_view text) { WriteRawLine(n, EncodeField(text)); }

void FileTable::WriteLine(int n, const Value& v) {
    switch (v.kind()) {
    case Value::Kind::Empty: WriteRawLine(n, ""); break;
    case Value::Kind::Text: WriteLine(n, std::string_view(v.asText())); break;
    case Value::Kind::Number: {
        double x = v.asNumber();
        char buf[64];
        auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(x));
        std::string s = (x < 0 ? "-" : " ") + std::string(buf, res.ptr) + " ";
        WriteRawLine(n, s);
        break;
    }
    }
}

bool FileTable::fill(Open& f) {
    if (f.pos < f.len) return true;
    if (f.eof) return false;
    f.len = f.in->read(f.buf.data(), f.buf.size());
    f.pos = 0;
    if (f.len == 0) f.eof = true;
    return f.len > 0;
}

// Reading one field, whatever lines it lies on:
//  1. blanks (spaces, tabs) are skipped;
//  2. at the end of the file the read fails: the only end-of-file signal;
//  3. a field that opens with a double quote runs to the next lone double
//     quote, commas and line ends included; a doubled one inside stands for one
//     quote; anything between the closing quote and the next delimiter is
//     dropped; a file that ends first ends the field;
//  4. any other field runs to the next comma, CR or LF, or the end of the file;
//  5. one delimiter is consumed: a comma, or a line end (CR LF, CR, LF).
std::string FileTable::ReadField(int n) {
    std::string field;
    ReadFieldInto(n, field);
    return field;
}

void FileTable::ReadFieldInto(int n, std::string& field) {
    Open& f = get(n);
    if (!f.in) throw Failure("bad file mode");
    while (fill(f) && (f.buf[f.pos] == ' ' || f.buf[f.pos] == '\t')) ++f.pos;
    if (!fill(f)) throw forms::EndOfFile();

    field.clear();
    if (f.buf[f.pos] == '"') {
        ++f.pos;
        for (;;) {
            if (!fill(f)) return;
            const char* start = f.buf.data() + f.pos;
            const char* end = f.buf.data() + f.len;
            const char* q = static_cast<const char*>(std::memchr(start, '"', static_cast<std::size_t>(end - start)));
            if (!q) { field.append(start, end); f.pos = f.len; continue; }
            field.append(start, q);
            f.pos += static_cast<std::size_t>(q - start) + 1;
            if (fill(f) && f.buf[f.pos] == '"') { field += '"'; ++f.pos; continue; }
            break;
        }
        // Whatever stands behind the closing quote up to the delimiter is dropped.
        while (fill(f)) {
            char c = f.buf[f.pos];
            if (c == ',' || c == '\r' || c == '\n') break;
            ++f.pos;
        }
    } else {
        while (fill(f)) {
            const char* start = f.buf.data() + f.pos;
            const char* p = start;
            const char* end = f.buf.data() + f.len;
            while (p < end && !isDelimiter(*p)) ++p;
            field.append(start, p);
            f.pos += static_cast<std::size_t>(p - start);
            if (p < end) break;
        }
    }
    if (fill(f)) {
        char c = f.buf[f.pos];
        if (c == ',') ++f.pos;
        else if (c == '\n') ++f.pos;
        else if (c == '\r') {
            ++f.pos;
            if (fill(f) && f.buf[f.pos] == '\n') ++f.pos;
        }
    }
}

void FileTable::Kill(const std::string& path) { files_.remove(path); }

void FileTable::KillMatching(const std::string& folder, const std::string& suffix) { files_.removeMatching(folder, suffix); }

} // namespace storage

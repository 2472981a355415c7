#pragma once
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "forms/ports.h"
#include "storage/value.h"

namespace storage {

// A text as WriteLine stores it: unchanged whenever ReadField gives it back
// unchanged, else in double quotes with each inner double quote doubled.
std::string EncodeField(std::string_view text);
bool NeedsQuotes(std::string_view text);
// The same, appended to out.
void AppendField(std::string& out, std::string_view text);

// The open files of the program by number, as the storage procedures use them:
// sequential reading field by field, whole files written and put in place at
// their close.
class FileTable {
public:
    static constexpr int kMaxFiles = 255;

    explicit FileTable(forms::FilesPort& files) : files_(files) {}
    ~FileTable();

    forms::FilesPort& files() { return files_; }

    // The lowest number not in use.
    int FreeFile() const;
    bool isOpen(int n) const;

    // The file must exist. Fails with forms::FileNotFound when it doesn't.
    void OpenInput(int n, const std::string& path);
    // The new content takes the old file's place only at Close.
    void OpenOutput(int n, const std::string& path);
    // Closing a number that is not open does nothing. An output file is put in
    // place here, unless one of its writes failed: then it is dropped.
    void Close(int n);
    // Drops a file being written, leaving the old one as it was; closes an input.
    void Abandon(int n);
    void CloseAll();

    // The next field: see the reading rules in records.cpp. Fails at the end of the file.
    std::string ReadField(int n);
    // The same into a string the caller keeps, so its storage serves again.
    void ReadFieldInto(int n, std::string& field);
    // One value and a line end: a text encoded by EncodeField, a number with a
    // blank on either side (a minus sign in place of the first), nothing as nothing.
    void WriteLine(int n, const Value& value);
    void WriteLine(int n, std::string_view text);
    // A line whose fields are already encoded, written as it stands.
    void WriteRawLine(int n, std::string_view line);
    // Bytes as they stand, line ends included.
    void WriteBytes(int n, std::string_view bytes);

    void Kill(const std::string& path);
    void KillMatching(const std::string& folder, const std::string& suffix);

private:
    struct Open {
        std::string path;
        std::unique_ptr<forms::InputStream> in;
        std::unique_ptr<forms::OutputStream> out;
        std::vector<char> buf;
        std::size_t pos = 0, len = 0;
        bool eof = false;
        bool broken = false; // a write failed: never put in place
    };
    Open& get(int n);
    void write(Open& f, std::string_view data);
    bool fill(Open& f);

    forms::FilesPort& files_;
    std::array<std::unique_ptr<Open>, kMaxFiles + 1> open_{};
};

} // namespace storage

#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "forms/control.h"
#include "forms/failure.h"

namespace forms {

class Picture;

// ---- Files -------------------------------------------------------------

// An open is refused because there is no such file (as opposed to one that
// exists and can't be read).
class FileNotFound : public Failure {
public:
    explicit FileNotFound(const std::string& path) : Failure("file not found: " + path) {}
};


// A file being written under a temporary name. commit() puts it in place of the
// old file in one step; dropping it uncommitted leaves the old file as it was.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    virtual void write(const char* data, std::size_t n) = 0;
    virtual void commit() = 0;
};

// What tells one state of a file from another without reading it: the same
// path showing the same fingerprint holds the same bytes, unless someone wrote
// it in place and set its time back.
struct FileFingerprint {
    std::uint64_t device = 0, inode = 0, size = 0;
    std::int64_t mtimeNs = 0;
    // The modification time lay so far back when this was taken that any later
    // change of the file moves it; a change within the clock's last tick might not.
    bool settled = false;
    // The time of the last change of the file or its attributes, which nobody
    // can set back, and whether it lay as far back as the modification time.
    std::int64_t ctimeNs = 0;
    bool ctimeSettled = false;

    bool sameState(const FileFingerprint& o) const {
        return device == o.device && inode == o.inode && size == o.size && mtimeNs == o.mtimeNs;
    }
    // The same state, and not even a write in place with its time set back
    // since: valid proof only if this was taken with both times settled.
    bool untouchedSince(const FileFingerprint& o) const { return sameState(o) && ctimeNs == o.ctimeNs; }
};

class InputStream {
public:
    virtual ~InputStream() = default;
    // Up to n bytes; 0 at the end of the file. Fails on a read error.
    virtual std::size_t read(char* buf, std::size_t n) = 0;
    // The state of the file opened, taken at the open, or nothing when it
    // can't be told.
    virtual std::optional<FileFingerprint> state() const { return std::nullopt; }
};

class FilesPort {
public:
    virtual ~FilesPort() = default;
    // Fails with FileNotFound for a missing file, with Failure for any other reason.
    virtual std::unique_ptr<InputStream> openRead(const std::string& path) = 0;
    virtual std::unique_ptr<OutputStream> openReplace(const std::string& path) = 0;
    virtual bool exists(const std::string& path) = 0;
    // The state of a regular file, or nothing when there is none or it can't be
    // told; nothing makes every save write its file.
    virtual std::optional<FileFingerprint> fingerprint(const std::string& path) { return std::nullopt; }
    virtual void remove(const std::string& path) = 0;
    // Removes every file of the folder whose name ends in suffix; fails when none does.
    virtual void removeMatching(const std::string& folder, const std::string& suffix) = 0;
};

// ---- Dialogs -----------------------------------------------------------

enum MsgButtons { vbOKOnly = 0, vbOKCancel = 1, vbYesNo = 4 };
enum MsgResult { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

class DialogsPort {
public:
    virtual ~DialogsPort() = default;
    // A modal message box with no icon and the first button as default.
    virtual int MsgBox(const std::string& text, int buttons, const std::string& title) = 0;
    // A modal input box with an empty line; Cancel gives "".
    virtual std::string InputBox(const std::string& prompt, const std::string& title) = 0;
    // The open-file dialog: the chosen path, or nothing on Cancel.
    virtual std::optional<std::string> ShowOpen(const std::string& filter) = 0;
    // The colour dialog: the chosen colour, or nothing on Cancel.
    virtual std::optional<Color> ShowColor() = 0;
};

// ---- Pictures ----------------------------------------------------------

class PicturesPort {
public:
    virtual ~PicturesPort() = default;
    // Fails for a missing file or one that is no picture.
    virtual std::shared_ptr<Picture> LoadPicture(const std::string& path) = 0;
    // What shows where a stock picture can't be read.
    virtual std::shared_ptr<Picture> placeholder() = 0;
};

// ---- Printer -----------------------------------------------------------

class PrinterPort {
public:
    virtual ~PrinterPort() = default;
    // Puts the text at the current position; without openEnd the line ends after it.
    virtual void Print(const std::string& text, bool openEnd) = 0;
    // Ends the job and hands it over; with nothing pending it does nothing.
    virtual void EndDoc() = 0;
};

// ---- Currency ----------------------------------------------------------

class CurrencyPort {
public:
    virtual ~CurrencyPort() = default;
    // Digits after the decimal point of an amount.
    virtual int decimals() const = 0;
    // An amount already rounded to decimals(), in the regional currency format.
    virtual std::string format(double roundedAmount) const = 0;
    // Any text format() gives, and plain numbers; fails on anything else.
    virtual double parse(const std::string& text) const = 0;
};

// ---- Program start -----------------------------------------------------

class ProgramPort {
public:
    virtual ~ProgramPort() = default;
    // Starts the system information program; false when there is none.
    virtual bool startSystemInfo() = 0;
    // Ends the process once the current event has returned.
    virtual void endProgram() = 0;
};

} // namespace forms

#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

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
// path showing the same fingerprint holds the same bytes. The change time is
// part of it because nobody can set it back: a write in place whose
// modification time was put back as it was still moves it.
struct FileFingerprint {
    std::uint64_t device = 0, inode = 0, size = 0;
    std::int64_t mtimeNs = 0, ctimeNs = 0;
    // Both times lay so far back when this was taken that any later change of
    // the file moves them; a change within the file system's last time step might not.
    bool settled = false;

    bool sameState(const FileFingerprint& o) const {
        return device == o.device && inode == o.inode && size == o.size && mtimeNs == o.mtimeNs && ctimeNs == o.ctimeNs;
    }
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

// Whether a file's times (nanoseconds of the real-time clock) are older than
// the step of the clock that gave them, at the time now. Times in whole
// seconds come from a file system that keeps no finer ones, and FAT steps by
// two seconds; finer times come from the kernel's coarse clock, a few
// milliseconds a tick, given here a tenth of a second.
bool TimesSettled(std::int64_t mtimeNs, std::int64_t ctimeNs, std::int64_t nowNs);

class FilesPort {
public:
    virtual ~FilesPort() = default;
    // Fails with FileNotFound for a missing file, with Failure for any other reason.
    virtual std::unique_ptr<InputStream> openRead(const std::string& path) = 0;
    // The same, but the bytes the device holds: what the system still keeps of
    // the file in memory is synced and dropped first, so a read-back sees
    // whether a write really reached the disk. A port without such memory reads.
    virtual std::unique_ptr<InputStream> openReadFromDevice(const std::string& path) { return openRead(path); }
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

// The button set, plus vbDefaultButton2 for a question whose safe answer is
// the second button: it is then the default, and Esc and a closed box give it too.
enum MsgButtons { vbOKOnly = 0, vbOKCancel = 1, vbYesNo = 4, vbDefaultButton2 = 256 };
enum MsgResult { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

class DialogsPort {
public:
    virtual ~DialogsPort() = default;
    // A modal message box with no icon and the first button as default (the
    // second with vbDefaultButton2).
    virtual int MsgBox(const std::string& text, int buttons, const std::string& title) = 0;
    // A modal input box with an empty line; Cancel gives "".
    virtual std::string InputBox(const std::string& prompt, const std::string& title) = 0;
    // The open-file dialog: the chosen path, or nothing on Cancel.
    virtual std::optional<std::string> ShowOpen(const std::string& filter) = 0;
    // The colour dialog: the chosen colour, or nothing on Cancel.
    virtual std::optional<Color> ShowColor() = 0;
    // The save-file dialog, opening on the suggested file name in the user's
    // documents folder: the chosen path, or nothing on Cancel (and where there
    // is no such dialog).
    virtual std::optional<std::string> ShowSave(const std::string& name, const std::string& filter) {
        (void)name;
        (void)filter;
        return std::nullopt;
    }
};

// ---- Pictures ----------------------------------------------------------

class PicturesPort {
public:
    virtual ~PicturesPort() = default;
    // Fails for a missing file or one that is no picture.
    virtual std::shared_ptr<Picture> LoadPicture(const std::string& path) = 0;
    // What shows where a stock picture can't be read.
    virtual std::shared_ptr<Picture> placeholder() = 0;
    // The program's own icon, 48 by 48 (the placeholder where there is none).
    virtual std::shared_ptr<Picture> applicationIcon() = 0;
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

// ---- Documents of pages ------------------------------------------------

// How a text is set: a size in points, plain or bold.
struct TextStyle {
    double points = 9;
    bool bold = false;
};

// A document being written page by page, in points from the top left corner
// of the printable area. Nothing shows at its path until finish(); abandon(),
// or dropping it unfinished, leaves no file behind.
class PageDocument {
public:
    virtual ~PageDocument() = default;
    // The printable area of a page.
    virtual double pageWidth() const = 0;
    virtual double pageHeight() const = 0;
    virtual double textWidth(const std::string& text, const TextStyle& style) = 0;
    // From the top of one line to the top of the next.
    virtual double lineHeight(const TextStyle& style) = 0;
    // One line of text with its top at y.
    virtual void drawText(double x, double y, const std::string& text, const TextStyle& style) = 0;
    // The picture in the file scaled into the box, its proportions kept; false
    // when the file can't be read as a picture.
    virtual bool drawPicture(const std::string& path, double x, double y, double width, double height) = 0;
    virtual void drawLine(double x1, double y1, double x2, double y2) = 0;
    virtual void newPage() = 0;
    // Puts the document at its path; fails when it can't be written whole.
    virtual void finish() = 0;
    virtual void abandon() = 0;
};

class DocumentsPort {
public:
    virtual ~DocumentsPort() = default;
    // A PDF document on the paper size of the user's region; fails when the
    // place can't be written.
    virtual std::unique_ptr<PageDocument> beginPdf(const std::string& path, const std::string& title) = 0;
};

// ---- Progress of a long command ----------------------------------------

class ProgressPort {
public:
    virtual ~ProgressPort() = default;
    virtual void start(const std::string& text, int total) = 0;
    // The work done so far; false once the user has asked to stop.
    virtual bool advance(int done) = 0;
    virtual void stop() = 0;
};

// ---- Currency ----------------------------------------------------------

// An amount rounded to a currency's decimals, exactly: a whole number of the
// currency's smallest units, in decimal digits without leading zeros ("0" for none).
struct MoneyUnits {
    bool negative = false;
    std::string digits = "0";

    // The whole and the decimal digits at this many decimals: 5 units at 2 are "0" and "05".
    std::pair<std::string, std::string> split(int decimals) const {
        const auto d = static_cast<std::size_t>(decimals < 0 ? 0 : decimals);
        const std::string all = digits.size() <= d ? std::string(d + 1 - digits.size(), '0') + digits : digits;
        return {all.substr(0, all.size() - d), all.substr(all.size() - d)};
    }
};

// How the user's region writes a short date: the order of its parts, and the
// hundred years a year of two digits falls in.
struct DateRules {
    enum class Order { MonthDayYear, DayMonthYear, YearMonthDay };
    Order order = Order::MonthDayYear;
    int twoDigitYearFrom = 1930; // "29" is 2029 and "30" is 1930
};

// The regional settings: the currency format, and the dates of the region.
class CurrencyPort {
public:
    virtual ~CurrencyPort() = default;
    virtual DateRules dateRules() const = 0;
    // Today in the user's time zone, in days from 1970-01-01.
    virtual int today() const = 0;
    // Digits after the decimal point of an amount.
    virtual int decimals() const = 0;
    // A rounded amount in the regional currency format.
    virtual std::string format(const MoneyUnits& amount) const = 0;
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
    // Opens a file with the desktop's own program for it; false when none.
    virtual bool openDocument(const std::string& path) {
        (void)path;
        return false;
    }
};

} // namespace forms

#include "storage/whole_file.h"

#include "forms/failure.h"
#include "storage/file_table.h"

namespace storage {

std::optional<std::string> ReadWholeFile(forms::FilesPort& port, const std::string& path, bool fromDevice) {
    std::unique_ptr<forms::InputStream> in;
    try {
        in = fromDevice ? port.openReadFromDevice(path) : port.openRead(path);
    } catch (const forms::FileNotFound&) {
        return std::nullopt;
    }
    std::string bytes;
    char buf[16 * 1024];
    while (std::size_t got = in->read(buf, sizeof buf)) bytes.append(buf, got);
    return bytes;
}

std::optional<std::vector<std::string>> ReadAllFields(forms::FilesPort& port, const std::string& path) {
    // A table of its own: what the program's table knows of its files stays as it is.
    FileTable table(port);
    try {
        table.OpenInput(1, path);
    } catch (const forms::FileNotFound&) {
        return std::nullopt;
    }
    std::vector<std::string> fields;
    try {
        for (;;) fields.push_back(table.ReadField(1));
    } catch (const forms::EndOfFile&) {
    }
    table.Close(1);
    return fields;
}

} // namespace storage

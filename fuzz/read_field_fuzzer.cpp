// Any bytes as a file read field by field: the reading ends at the end of the
// file, each field is no longer than the file, and every field comes back
// unchanged when written by WriteLine and read again.
#include <cstdint>
#include <string>
#include <vector>

#include "forms/failure.h"
#include "memory_platform.h"
#include "storage/file_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::MemoryFiles mem;
    mem.files["/in"] = std::string(reinterpret_cast<const char*>(data), size);
    storage::FileTable files(mem);
    std::vector<std::string> fields;
    files.OpenInput(1, "/in");
    try {
        for (;;) {
            fields.push_back(files.ReadField(1));
            if (fields.back().size() > size) fuzzing::broken("a field longer than its file");
            if (fields.size() > size + 1) fuzzing::broken("more fields than bytes");
        }
    } catch (const forms::EndOfFile&) {
    }
    files.Close(1);

    files.OpenOutput(2, "/out");
    for (const auto& f : fields) files.WriteLine(2, std::string_view(f));
    files.Close(2);
    files.OpenInput(3, "/out");
    for (const auto& f : fields)
        if (files.ReadField(3) != f) fuzzing::broken("a field that WriteLine and ReadField change");
    try {
        files.ReadField(3);
        fuzzing::broken("a field more than was written");
    } catch (const forms::EndOfFile&) {
    }
    return 0;
}

// Any bytes as a category file: opening the category and Exit never crash;
// what Exit leaves reads back as the rows that were shown, and a second round
// leaves the file as the first one did. A file that could not be read whole
// stays as it was.
#include <string>

#include "memory_platform.h"
#include "support/snapshots.h"

namespace {

qmtest::Table openAndExit(fuzzing::MemoryFiles& mem) {
    fuzzing::Program p(mem);
    p.main.Start();
    p.run([&] { p.main.lstCategory.setSelected(0); });
    qmtest::Table shown = qmtest::gridCells(p.main.FG1);
    p.exit();
    return shown;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::MemoryFiles mem;
    const std::string file = std::string(fuzzing::kData) + "A.csv";
    mem.files[std::string(fuzzing::kData) + "NumCats.csv"] = "1\r\n";
    mem.files[std::string(fuzzing::kData) + "CatFiles.csv"] = "A\r\n";
    const std::string original(reinterpret_cast<const char*>(data), size);
    mem.files[file] = original;

    qmtest::Table first = openAndExit(mem);
    const std::string written = mem.files[file];
    if (written == original) return 0;
    qmtest::Table second = openAndExit(mem);
    if (second != first) fuzzing::broken("the rows written at Exit read back as other rows");
    if (mem.files[file] != written) fuzzing::broken("a second round wrote the file differently");
    return 0;
}

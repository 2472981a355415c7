// Any "NumCats.csv" and "CatFiles.csv": the start and Exit never crash, the
// list holds no more entries than a list can, and an index that Exit wrote
// again reads back as the list that was shown. One that could not be read is
// not written over.
#include <fuzzer/FuzzedDataProvider.h>

#include "memory_platform.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    fuzzing::MemoryFiles mem;
    const std::string count = std::string(fuzzing::kData) + "NumCats.csv";
    const std::string names = std::string(fuzzing::kData) + "CatFiles.csv";
    const std::string oldCount = in.ConsumeRandomLengthString(64);
    const std::string oldNames = in.ConsumeRemainingBytesAsString();
    mem.files[count] = oldCount;
    mem.files[names] = oldNames;

    std::vector<std::string> shown;
    {
        fuzzing::Program p(mem);
        p.main.Start();
        shown = p.main.lstCategory.items();
        if (shown.size() > 32767) fuzzing::broken("more entries than a list holds");
        p.exit();
    }
    if (mem.files[count] == oldCount && mem.files[names] == oldNames) return 0;
    fuzzing::Program again(mem);
    again.main.Start();
    if (again.main.lstCategory.items() != shown) fuzzing::broken("an index written back that reads as another list");
    return 0;
}

// Any content of the five colour files, each there or not: the start applies
// what it can read and never crashes.
#include <fuzzer/FuzzedDataProvider.h>

#include "appearance/colors.h"
#include "memory_platform.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    fuzzing::MemoryFiles mem;
    for (const qm::ColorFile& cf : qm::kColorFiles)
        if (in.ConsumeBool()) mem.files[std::string(fuzzing::kData) + cf.file] = in.ConsumeRandomLengthString(40);
    fuzzing::Program p(mem);
    p.main.Start();
    // The heading's colour is the first file's number whenever that one is read whole.
    auto it = mem.files.find(std::string(fuzzing::kData) + "HColor");
    if (it != mem.files.end() && p.main.propertiesIfLoaded()) {
        std::string digits = it->second.substr(0, it->second.find_first_of(",\r\n"));
        try {
            if (p.main.lblCategory.ForeColor() != qm::ColorFromText(digits) && digits.find('"') == std::string::npos)
                fuzzing::broken("the heading's colour is not the number of its file");
        } catch (const forms::Failure&) {
        }
    }
    return 0;
}

// Any bytes as the picture link of an item: the editor's focus reads it and
// never crashes; the path it keeps is the link's first field.
#include <string>

#include "forms/failure.h"
#include "forms/input.h"
#include "memory_platform.h"
#include "storage/file_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::MemoryFiles mem;
    const std::string d = fuzzing::kData;
    mem.files[d + "NumCats.csv"] = "1\r\n";
    mem.files[d + "CatFiles.csv"] = "A\r\n";
    mem.files[d + "A.csv"] = "Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty "
                             "Expiration,Serial Number / Description\r\nI,1,2,,,,\r\n";
    const std::string link(reinterpret_cast<const char*>(data), size);
    mem.files[d + "AI.csv"] = link;

    fuzzing::Program p(mem);
    p.main.Start();
    p.run([&] { p.main.lstCategory.setSelected(0); });
    p.globals.PicturePath = "<none>";
    forms::input::clickCell(p.runtime, p.main.FG1, 1, 1); // a cell of the item: the editor takes the focus

    storage::FileTable reader(mem);
    reader.OpenInput(1, d + "AI.csv");
    std::string first;
    try {
        first = reader.ReadField(1);
    } catch (const forms::EndOfFile&) {
        return 0;
    }
    if (p.globals.PicturePath != first) fuzzing::broken("the picture path is not the link's first field");
    return 0;
}

#pragma once
#include <string>

namespace storage {

// The program's two places. The shipped program passes these; tests pass folders of their own.
inline constexpr const char* kDataFolder = "~/.local/share/Quillmere/";
inline constexpr const char* kFloppyRoot = "/media/floppy/";

struct Places {
    std::string dataFolder; // with its closing "/"
    std::string floppyRoot; // with its closing "/"
};

// The constants with "~" made the user's home folder.
Places shippedPlaces();

} // namespace storage

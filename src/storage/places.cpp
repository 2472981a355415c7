#include "storage/places.h"

#include <cstdlib>

namespace storage {

Places shippedPlaces() {
    std::string data = kDataFolder;
    if (data.rfind("~/", 0) == 0) {
        const char* home = std::getenv("HOME");
        data = std::string(home && *home ? home : "/root") + data.substr(1);
    }
    return {data, kFloppyRoot};
}

std::string FileStem(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (char c : name) {
        if (c == '/') out += "\xE2\x88\x95"; // U+2215
        else out += c;
    }
    return out;
}

} // namespace storage

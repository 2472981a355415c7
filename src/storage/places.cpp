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
    // "/" can't stand in a file name and is written as the division slash
    // U+2215. So that no two names share a file, a division slash of the name
    // itself is written as U+2216 followed by "1", and U+2216 as U+2216 "0".
    static const std::string kDivisionSlash = "\xE2\x88\x95", kSetMinus = "\xE2\x88\x96";
    std::string out;
    out.reserve(name.size());
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '/') {
            out += kDivisionSlash;
        } else if (name.compare(i, 3, kDivisionSlash) == 0) {
            out += kSetMinus + "1";
            i += 2;
        } else if (name.compare(i, 3, kSetMinus) == 0) {
            out += kSetMinus + "0";
            i += 2;
        } else {
            out += name[i];
        }
    }
    return out;
}

} // namespace storage

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

} // namespace storage

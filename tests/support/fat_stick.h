#pragma once
#include <filesystem>
#include <string>

#include "support/scripted_platform.h"

namespace qmtest {

// A real FAT file system, as nearly every USB stick carries: an image made by
// mkfs.vfat and mounted through FUSE by fusefat at a folder of the test's.
class FatStick {
public:
    // Why no stick can be mounted here (not root, no /dev/fuse, a tool
    // missing), or "" when one can.
    static std::string unavailable();

    explicit FatStick(int kibibytes);
    ~FatStick();
    FatStick(const FatStick&) = delete;
    FatStick& operator=(const FatStick&) = delete;

    // Mounts the stick at the folder (unmounting it from where it was); false on failure.
    bool mountAt(const std::filesystem::path& folder);
    void unmount();

private:
    TempDir dir_;
    std::filesystem::path image_, at_;
};

} // namespace qmtest

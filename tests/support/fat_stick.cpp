#include "support/fat_stick.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <unistd.h>

namespace qmtest {

namespace fs = std::filesystem;

namespace {

bool mountedAt(const fs::path& folder) {
    std::ifstream mounts("/proc/mounts");
    std::string device, point, rest;
    while (mounts >> device >> point && std::getline(mounts, rest))
        if (point == folder.string()) return true;
    return false;
}

int shell(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

std::string quoted(const fs::path& p) { return "'" + p.string() + "'"; }

} // namespace

std::string FatStick::unavailable() {
    if (::geteuid() != 0) return "mounting a FAT image through FUSE needs root";
    if (!fs::exists("/dev/fuse")) return "this machine has no /dev/fuse";
    for (const char* tool : {"mkfs.vfat", "fusefat", "fusermount"})
        if (shell(std::string("PATH=\"$PATH:/usr/sbin:/sbin\" command -v ") + tool) != 0)
            return std::string(tool) + " is not installed (packages dosfstools, fusefat)";
    return "";
}

FatStick::FatStick(int kibibytes) : image_(dir_.path() / "stick.img") {
    { std::ofstream(image_, std::ios::binary); }
    fs::resize_file(image_, static_cast<std::uintmax_t>(kibibytes) * 1024);
    shell("PATH=\"$PATH:/usr/sbin:/sbin\" mkfs.vfat -n QMSTICK " + quoted(image_));
}

FatStick::~FatStick() { unmount(); }

bool FatStick::mountAt(const fs::path& folder) {
    unmount();
    if (shell("fusefat -o rw+ " + quoted(image_) + " " + quoted(folder)) != 0) return false;
    for (int i = 0; i < 100 && !mountedAt(folder); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!mountedAt(folder)) return false;
    at_ = folder;
    return true;
}

void FatStick::unmount() {
    if (at_.empty()) return;
    // The last writes may keep it busy for a moment.
    for (int i = 0; i < 50 && mountedAt(at_); ++i) {
        if (shell("fusermount -u " + quoted(at_)) == 0) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    at_.clear();
}

} // namespace qmtest

#include "storage/places.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <system_error>

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

std::string StickStem(const std::string& name, bool escapeCapitals) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    const auto plain = [](unsigned char c) {
        return c >= 0x20 && c != 0x7F && !std::strchr("\\/:*?\"<>|%", c);
    };
    std::string out;
    out.reserve(name.size());
    const auto escape = [&](unsigned char c) {
        out += '%';
        out += kHex[c >> 4];
        out += kHex[c & 15];
    };
    // The disk ignores letter case: "numcats.csv" would be the index itself.
    const auto sameLetters = [&](const char* index) {
        return name.size() == std::strlen(index) &&
               std::equal(name.begin(), name.end(), index, [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); });
    };
    const bool likeIndex = sameLetters("numcats") || sameLetters("catfiles");
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto c = static_cast<unsigned char>(name[i]);
        const bool last = i + 1 == name.size();
        if (!plain(c) || (likeIndex && i == 0) || (last && (c == '.' || c == ' ')) || (escapeCapitals && c >= 'A' && c <= 'Z'))
            escape(c);
        else out += static_cast<char>(c);
    }
    return out;
}

std::set<std::string> CaseBlindClashes(const std::vector<std::string>& names) {
    // The hex digits of an escape are always capitals, so a stem folded to
    // lower case still tells its escapes apart: two stems fold alike only when
    // they differ in the case of plain letters, which escaping the capitals of
    // both takes away.
    std::map<std::string, std::vector<const std::string*>> byFolded;
    for (const std::string& name : names) {
        std::string folded = StickStem(name);
        std::transform(folded.begin(), folded.end(), folded.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        byFolded[folded].push_back(&name);
    }
    std::set<std::string> clashes;
    for (const auto& [folded, same] : byFolded)
        if (same.size() > 1)
            for (const std::string* name : same) clashes.insert(*name);
    return clashes;
}

std::string PrepareDataFolder(const std::string& dataFolder, const std::string& shareFolder) {
    namespace fs = std::filesystem;
    std::string problems;
    std::error_code ec;
    fs::create_directories(dataFolder, ec);
    if (ec) return "can't make the data folder " + dataFolder + ": " + ec.message() + "\n";
    for (const char* name : kShippedFiles) {
        const fs::path target = fs::path(dataFolder) / name, source = fs::path(shareFolder) / name;
        if (fs::exists(fs::symlink_status(target, ec))) continue; // the user's own, whatever it is
        if (!fs::is_regular_file(source, ec)) continue;            // a program that was not installed
        // skip_existing: a file that appeared meanwhile is not replaced either.
        fs::copy_file(source, target, fs::copy_options::skip_existing, ec);
        if (ec) problems += "can't copy " + source.string() + " to " + target.string() + ": " + ec.message() + "\n";
    }
    return problems;
}

} // namespace storage

#pragma once
#include <optional>
#include <string>
#include <vector>

#include "forms/ports.h"

namespace storage {

// A whole file's bytes, or nothing when it is missing; fails when it can't be
// read. fromDevice: as its device holds them (FilesPort::openReadFromDevice).
std::optional<std::string> ReadWholeFile(forms::FilesPort& port, const std::string& path, bool fromDevice = false);

// Every field of a file as ReadField gives them, or nothing when it is missing;
// fails when it can't be read.
std::optional<std::vector<std::string>> ReadAllFields(forms::FilesPort& port, const std::string& path);

} // namespace storage

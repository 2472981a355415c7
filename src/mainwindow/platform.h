#pragma once
#include <string>

#include "forms/ports.h"
#include "forms/runtime.h"
#include "storage/places.h"

namespace qm {

// Everything the program gets from outside: the event runtime, the ports, the two places.
struct Platform {
    forms::Runtime& runtime;
    forms::FilesPort& files;
    forms::DialogsPort& dialogs;
    forms::PicturesPort& pictures;
    forms::PrinterPort& printer;
    forms::CurrencyPort& currency;
    forms::ProgramPort& program;
    storage::Places places;
    // What only the inventory report needs; a platform without them makes none.
    forms::DocumentsPort* documents = nullptr;
    forms::ProgressPort* progress = nullptr;
};

// The variables shared by the program's windows.
struct modGlobalVars {
    std::string PicturePath;
    bool LinkRead = false;
    std::string ColorValue;
};

inline constexpr const char* kAppTitle = "Quillmere";

} // namespace qm

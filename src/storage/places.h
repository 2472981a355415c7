#pragma once
#include <cstddef>
#include <set>
#include <string>
#include <vector>

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

// A name as it stands in a file name: "/" can't, so it is written as the
// division slash U+2215, and no name reaches a folder outside its place.
std::string FileStem(const std::string& name);

// A name as it stands in a file name on the backup disk. Removable disks are
// nearly always FAT or exFAT, which refuse \ / : * ? " < > | and control
// characters: each of those (and "%" itself) is written as "%" and two hex
// digits, plain ASCII that every FAT driver takes, so no two names share a
// file. A stem that would end in a dot or a blank, or that only the letter
// case tells from an index file's, has its last or first byte written that
// way too. Letters beyond ASCII stay as they are: escaped, they would take
// three times the room of a name's 255 places. With escapeCapitals, every
// ASCII capital letter is escaped too (see CaseBlindClashes).
std::string StickStem(const std::string& name, bool escapeCapitals = false);

// The names of one index whose stick stems a disk blind to ASCII letter case
// would take for one file ("Car" and "car"). Their stems escape their capitals,
// so each keeps a file of its own and every other name its plain stem. Letters
// beyond ASCII are not folded here: such a pair on a stick that folds them too
// is caught by the read-back and told, never lost in silence.
std::set<std::string> CaseBlindClashes(const std::vector<std::string>& names);

// The longest file name the file systems we meet accept, in bytes.
inline constexpr std::size_t kMaxFileName = 255;

// The files a data folder starts with: installed with the program, read only.
inline constexpr const char* kShippedFiles[] = {"NoPic.jpg", "Readme.htm"};

// Makes the data folder (and the folders above it) if it is missing, and
// copies each shipped file that it lacks from shareFolder (the installed
// share/quillmere/; a file missing there is skipped). A file already there is
// never replaced. Gives what could not be done, one line each, or "" when all
// went well.
std::string PrepareDataFolder(const std::string& dataFolder, const std::string& shareFolder);

} // namespace storage

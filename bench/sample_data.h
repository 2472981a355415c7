#pragma once
#include <string>
#include <vector>

namespace qmbench {

// Items as a user fills them in: every one of the seven cells set, names with a
// running number ("Cordless drill 00123"), amounts with cents ("129.99"), US
// dates ("3/14/2021"), serials ("SN DX-4471-00123"). The same seed gives the same items.
std::vector<std::vector<std::string>> sampleItems(int count, unsigned seed);

} // namespace qmbench

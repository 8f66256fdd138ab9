// Listing a folder: the scheduler finds its named files as the files of the
// schedules folder with a given extension.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace vantr {

// Names (without the folder) of the regular files in folder whose names end
// in suffix, compared without regard to case, in the order the file system
// returns them. Sub-folders are left out. False when the folder cannot be read.
bool listFolder(const std::string& folder, std::string_view suffix, std::vector<std::string>& names);

// Whether name ends in suffix, compared without regard to case.
inline bool endsWithNoCase(std::string_view name, std::string_view suffix) {
  return name.size() >= suffix.size() && equalsNoCase(name.substr(name.size() - suffix.size()), suffix);
}

}  // namespace vantr

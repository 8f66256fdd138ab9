#pragma once

#include <string>

namespace vantr {

unsigned long currentProcessId();

// Name of a fresh temporary file in the same folder as path.
std::string temporaryNameBeside(const std::string& path);

// Renames from over to, replacing to; true on success. On Windows a reader that
// holds the target open can make this fail for a moment, so it retries.
bool renameReplacing(const std::string& from, const std::string& to);

// Makes a rename inside path's folder durable (the folder's own entry synced
// to disk where the platform needs that).
void syncFolderOf(const std::string& path);

}  // namespace vantr

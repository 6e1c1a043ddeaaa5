// Whole files.
#pragma once

#include <string>

namespace latbox {

// Reads the whole file; false if it is missing, unreadable or no regular text source (a directory).
bool readFile(const std::string& path, std::string& content);

// Replaces the file by `text` as a whole: a kill at any moment leaves the old or the new content. Where the
// folder does not allow a second file beside it, the file is rewritten in place, once there is room for it.
// False with `reason` (the system's text) if that fails, too; the old content then stands.
bool writeFile(const std::string& path, const std::string& text, std::string& reason);

// Whether the file can be opened for reading; a directory can not.
bool canOpen(const std::string& path);

// Whether opening for reading succeeds, whatever stands there. Allocates nothing and waits for nobody: for
// the handler of a signal.
bool canBeOpened(const std::string& path);

// Modification time in whole seconds; false if the file can't be opened.
bool modificationTime(const std::string& path, long& seconds);

// Removes the file; one that is missing is no error.
void removeFile(const std::string& path);

}  // namespace latbox

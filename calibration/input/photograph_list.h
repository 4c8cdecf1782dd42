// Finds photographs in a folder or by a pattern for their file names.
#pragma once

#include <string>
#include <vector>

namespace calibration {

// True if the text matches the pattern. In the pattern, * stands for any number of characters and ? for exactly one.
bool matchesGlob(const std::string &pattern, const std::string &text);

// Returns the paths of photographs, sorted by name, in the system's narrow encoding:
// - for a folder, the files in it that have the ending of a picture, without subfolders;
// - for a pattern such as photos/left*.jpg (with * or ? only in the file's name), the files whose names match it;
// - for any other text, the text itself, even if there is no such file.
// The list is empty if the folder has no pictures or no file matches.
std::vector<std::string> findPhotographs(const std::string &folderOrGlob);

}  // namespace calibration

// Finds the photographs in a folder, and the files whose names match a pattern.
#pragma once

#include <string>
#include <vector>

namespace calibration {

// True if the text matches the pattern. In the pattern, * stands for any text and ? for exactly one byte.
bool matchesGlob(const std::string &pattern, const std::string &text);

// Returns the paths of photographs, sorted by name. Paths are in UTF-8.
// - For a folder, returns the files in it that have the ending of a picture. Subfolders are not searched.
// - For a pattern such as photos/left*.jpg (with * or ? only in the file's name), returns all files whose names match.
//   If the name of one file is literally left*.jpg, returns only that file.
// - For any other text, returns the text itself, even if there is no such file.
// The list is empty if the folder has no pictures or no file matches.
std::vector<std::string> findPhotographs(const std::string &folderOrGlob);

}  // namespace calibration

// Finds photographs by folder or by pattern of file names.
#pragma once

#include <string>
#include <vector>

namespace calibration {

// True if the text matches a pattern in which * stands for any characters and ? for one.
bool matchesGlob(const std::string &pattern, const std::string &text);

// The pictures in a folder (by their endings, without subfolders), the files whose name matches a pattern such as
// photos/left*.jpg, or the file itself if the text is neither, whether or not there is one. Sorted by name; empty if
// nothing is found. Paths are in the system's narrow encoding.
std::vector<std::string> findPhotographs(const std::string &folderOrGlob);

}  // namespace calibration

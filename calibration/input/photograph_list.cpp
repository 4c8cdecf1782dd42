#include "calibration/input/photograph_list.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

namespace calibration {

namespace {

namespace fs = std::filesystem;

bool isPicture(const fs::path &path) {
    static const std::set<std::string> endings{".png", ".jpg", ".jpeg", ".tif", ".tiff",
                                               ".pgm", ".ppm", ".pnm",  ".bmp", ".webp"};
    std::string ending = path.extension().u8string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return char(std::tolower(static_cast<unsigned char>(c))); });
    return endings.count(ending) != 0;
}

}  // namespace

bool matchesGlob(const std::string &pattern, const std::string &text) {
    size_t p = 0;
    size_t t = 0;
    size_t star = std::string::npos;  // the position of the last * that was reached in the pattern
    size_t starEnd = 0;               // the end of the text that this * stands for so far
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starEnd = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            p++;
            t++;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++starEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string::npos;
}

std::vector<std::string> findPhotographs(const std::string &folderOrGlob) {
    std::error_code error;
    const fs::path path = fs::u8path(folderOrGlob);
    const bool isFolder = fs::is_directory(path, error);
    const bool isGlob = !fs::exists(path, error) && folderOrGlob.find_first_of("*?") != std::string::npos;
    if (!isFolder && !isGlob) {
        return {folderOrGlob};
    }
    const fs::path folder = isFolder ? path : path.parent_path();
    const std::string pattern = path.filename().u8string();
    std::vector<std::string> found;
    for (fs::directory_iterator i(folder.empty() ? "." : folder, error), end; !error && i != end; i.increment(error)) {
        const fs::path &file = i->path();
        const bool matches = isFolder ? isPicture(file) : matchesGlob(pattern, file.filename().u8string());
        std::error_code unknown;
        if (matches && !fs::is_directory(file, unknown)) {
            found.push_back((folder / file.filename()).u8string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace calibration

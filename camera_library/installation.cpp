#include "camera_library/installation.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "camera_library/lmlib64.h"
#include "camera_library/platform/library_location.h"

namespace lmlib64 {

namespace {

std::string_view folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

bool holdsLibraries(std::string_view folder) {
    constexpr std::array<std::string_view, 5> names{"bin", "lib", "lib32", "lib64", "libx32"};
    std::string name(folder.substr(folder.rfind('/') + 1));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::string_view installationRoot(std::string_view libraryFile) {
    for (std::string_view folder = folderOf(libraryFile); !folder.empty(); folder = folderOf(folder)) {
        if (holdsLibraries(folder)) {
            return folderOf(folder);
        }
    }
    return folderOf(folderOf(libraryFile));
}

NodeObject installationPaths() {
    NodeObject paths{{"Version", std::string(LMLIB_VERSION)}};
    const std::string file = libraryFile();
    if (!file.empty()) {
        const std::string root(installationRoot(file));
        const std::string viewer = std::string(root).append("/bin/LmView").append(programFileEnding);
        paths.emplace("Manual", root + "/share/lmcaltab/manual");
        paths.emplace("Application", NodeObject{{"LmView", viewer}});
    }
    return paths;
}

}  // namespace lmlib64

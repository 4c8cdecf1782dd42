#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "camera_library/platform/library_location.h"

namespace lmlib64 {

const std::string_view programFileEnding;

std::string libraryFile() {
    Dl_info info{};
    if (dladdr(&programFileEnding, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::canonical(info.dli_fname, error);
    return error ? std::string() : resolved.string();
}

}  // namespace lmlib64

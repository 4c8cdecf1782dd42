#include <windows.h>

#include <algorithm>

#include "camera_library/platform/library_location.h"

namespace lmlib64 {

const std::string_view programFileEnding = ".exe";

std::string libraryFile() {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&programFileEnding), &module) == 0) {
        return {};
    }
    // A path longer than the buffer is cut off, so the buffer grows until the path fits. No path has more than 32767
    // characters.
    std::wstring file;
    DWORD length = 0;
    do {
        file.resize(file.size() + MAX_PATH);
        length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    } while (length == file.size() && length < 32768);
    file.resize(length);
    // The backslashes are replaced before the conversion, because in some multi-byte encodings the byte of a backslash
    // can also be the second byte of another character.
    std::replace(file.begin(), file.end(), L'\\', L'/');
    const int size =
        WideCharToMultiByte(CP_ACP, 0, file.data(), static_cast<int>(file.size()), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, file.data(), static_cast<int>(file.size()), narrow.data(), size, nullptr, nullptr);
    return narrow;
}

}  // namespace lmlib64

// Fuzzes paths. Each line of the input is given, as a path, to most of the functions that take one. Of the functions
// that set a value, only lmLibSetDouble is called, as a representative of all. For every second line, the node at the
// path is then erased. The only effect of a bad path must be a result code. A number that was written must be read
// back. At the end, the whole tree must be writable as JSON, and /Path/Application/LmView must still exist, because the
// library protects it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "camera_library/lmlib64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void readAll(const char *path) {
    std::int32_t result = 0;
    lmLibGetString(&result, path);
    lmLibGetInt(&result, path);
    lmLibGetDouble(&result, path);
    lmLibGetBool(&result, path);
    lmLibGetName(&result, path);
    lmLibGetCount(&result, path);
    lmLibGetBinaryInfo(&result, path, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    lmLibGetBinary(&result, path, nullptr, 0, nullptr, nullptr);
    lmLibWaitForType(&result, path, LmLibTypeNull, 0);
    lmLibMakeUniqueItem(&result, path, path);
}

void writeAndErase(const char *path, bool erases) {
    std::int32_t result = 0;
    lmLibSetDouble(&result, path, 0.25);
    if (result == LmLibResultOperationSucceeded) {
        require(lmLibGetDouble(&result, path) == 0.25 && result == LmLibResultOperationSucceeded);
    }
    if (erases) {
        lmLibErase(&result, path);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char *>(data), size);
    bool erases = false;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string path(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        readAll(path.c_str());
        writeAndErase(path.c_str(), erases);
        erases = !erases;
    }
    std::int32_t result = 0;
    lmLibGetString(&result, "/Path/Application/LmView");
    require(result == LmLibResultOperationSucceeded);
    lmLibGetJson(&result, "", 1, 18, 0);
    require(result == LmLibResultOperationSucceeded);
    lmLibFinalize(nullptr);
    return 0;
}

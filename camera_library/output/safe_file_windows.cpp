#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <random>

#include "camera_library/output/safe_file.h"

namespace lmlib64 {

namespace {

std::string systemReason(DWORD error) {
    char *text = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, error, 0, reinterpret_cast<char *>(&text), 0, nullptr);
    std::string reason(text == nullptr ? "" : text, length);
    LocalFree(text);
    const std::size_t last = reason.find_last_not_of("\r\n. ");
    reason.resize(last == std::string::npos ? 0 : last + 1);
    return reason.empty() ? "system error " + std::to_string(error) : reason;
}

[[noreturn]] void fail(const std::string &fileName, DWORD error) {
    throw FileWriteError("The file \"" + fileName + "\" could not be written: " + systemReason(error) + ".");
}

// Names arrive in the local 8-bit encoding. They are converted, because the wide-character functions allow longer
// names.
std::wstring wideName(const std::string &fileName) {
    const int length = MultiByteToWideChar(CP_ACP, 0, fileName.c_str(), -1, nullptr, 0);
    if (length <= 0) {
        fail(fileName, GetLastError());
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, fileName.c_str(), -1, wide.data(), length);
    wide.pop_back();  // the zero at the end
    return wide;
}

void refuseUnsuitableTarget(const std::wstring &target, const std::string &fileName) {
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND) {
            return;
        }
        fail(fileName, error);
    }
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        fail(fileName, ERROR_ACCESS_DENIED);
    }
}

// A new file beside the target that is removed unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const std::wstring &target, const std::string &reportedName) : fileName(reportedName) {
        const std::size_t slash = target.find_last_of(L"/\\:");
        const std::wstring folder = slash == std::wstring::npos ? L"" : target.substr(0, slash + 1);
        std::random_device random;
        do {
            path = folder + L".lmlib64-" + std::to_wstring(random()) + L".tmp";
            handle = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        } while (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
        if (handle == INVALID_HANDLE_VALUE) {
            fail(fileName, GetLastError());
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    ~TemporaryFile() {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
        if (!isRenamed) {
            DeleteFileW(path.c_str());
        }
    }

    void write(const std::string &bytes) {
        constexpr std::size_t largestBlock = 1U << 24U;
        for (std::size_t written = 0; written < bytes.size();) {
            const auto block = static_cast<DWORD>(std::min(bytes.size() - written, largestBlock));
            DWORD count = 0;
            if (WriteFile(handle, bytes.data() + written, block, &count, nullptr) == 0) {
                fail(fileName, GetLastError());
            }
            written += count;
        }
    }

    void flushAndClose() {
        if (FlushFileBuffers(handle) == 0) {
            fail(fileName, GetLastError());
        }
        const HANDLE closing = handle;
        handle = INVALID_HANDLE_VALUE;
        if (CloseHandle(closing) == 0) {
            fail(fileName, GetLastError());
        }
    }

    void renameTo(const std::wstring &target) {
        if (MoveFileExW(path.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
            fail(fileName, GetLastError());
        }
        isRenamed = true;
    }

private:
    std::string fileName;
    std::wstring path;
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool isRenamed = false;
};

}  // namespace

void writeFileSafely(const std::string &fileName, const std::string &bytes) {
    const std::wstring target = wideName(fileName);
    refuseUnsuitableTarget(target, fileName);
    TemporaryFile file(target, fileName);
    file.write(bytes);
    file.flushAndClose();
    file.renameTo(target);
}

}  // namespace lmlib64

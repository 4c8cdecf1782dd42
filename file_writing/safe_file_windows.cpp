#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>

#include "file_writing/safe_file.h"

namespace file_writing {

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

// True if there is a file to be replaced. Refuses what must not be replaced.
bool isSuitableTarget(const std::wstring &target, const std::string &fileName) {
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND) {
            return false;
        }
        fail(fileName, error);
    }
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        fail(fileName, ERROR_ACCESS_DENIED);
    }
    return true;
}

std::wstring temporaryNameBeside(const std::wstring &target, std::random_device &random) {
    const std::size_t slash = target.find_last_of(L"/\\:");
    const std::wstring folder = slash == std::wstring::npos ? L"" : target.substr(0, slash + 1);
    return folder + L".lmlib64-" + std::to_wstring(random()) + L".tmp";
}

// A new file beside the target that is removed unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const std::wstring &target, const std::string &reportedName) : fileName(reportedName) {
        std::random_device random;
        do {
            path = temporaryNameBeside(target, random);
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

    // Returns 0 or the system's error.
    DWORD renameTo(const std::wstring &target) noexcept {
        if (MoveFileExW(path.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
            return GetLastError();
        }
        isRenamed = true;
        return 0;
    }

    [[noreturn]] void failBecauseOf(DWORD error) const { fail(fileName, error); }

private:
    std::string fileName;
    std::wstring path;
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool isRenamed = false;
};

}  // namespace

// One file, and what is needed to undo its renaming.
struct SafeFiles::Replacement {
    std::wstring target;
    std::unique_ptr<TemporaryFile> file;
    bool replacesFile = false;
    std::wstring
        oldFile;  // a second name of the file that is replaced; empty if there is none, or if it cannot be kept

    // Brings back what was there before the renaming. There is nothing to be done if that fails.
    void undo() noexcept {
        if (!oldFile.empty()) {
            MoveFileExW(oldFile.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        } else if (!replacesFile) {
            DeleteFileW(target.c_str());
        }
    }
};

SafeFiles::SafeFiles() = default;
SafeFiles::~SafeFiles() {
    for (const Replacement &replacement : replacements) {
        if (!replacement.oldFile.empty()) {
            DeleteFileW(replacement.oldFile.c_str());
        }
    }
}

void SafeFiles::write(const std::string &fileName, const std::string &bytes) {
    Replacement &replacement = replacements.emplace_back();
    replacement.target = wideName(fileName);
    replacement.replacesFile = isSuitableTarget(replacement.target, fileName);
    replacement.file = std::make_unique<TemporaryFile>(replacement.target, fileName);
    replacement.file->write(bytes);
    replacement.file->flushAndClose();
}

void SafeFiles::commit() {
    // The only file is either renamed or not, so its old one need not be kept.
    for (Replacement &replacement : replacements) {
        if (replacements.size() > 1 && replacement.replacesFile) {
            std::random_device random;
            std::wstring name = temporaryNameBeside(replacement.target, random);
            if (CreateHardLinkW(name.c_str(), replacement.target.c_str(), nullptr) != 0) {
                replacement.oldFile.swap(name);
            }
        }
    }
    for (std::size_t done = 0; done < replacements.size(); ++done) {
        if (const DWORD error = replacements[done].file->renameTo(replacements[done].target); error != 0) {
            for (std::size_t i = 0; i < done; ++i) {
                replacements[i].undo();
            }
            replacements[done].file->failBecauseOf(error);
        }
    }
}

}  // namespace file_writing

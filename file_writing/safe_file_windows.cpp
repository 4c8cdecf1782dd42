#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>

#include "file_writing/safe_file.h"
#include "file_writing/temporary_name.h"

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

// Owns a handle of the system and closes it.
class Handle {
public:
    explicit Handle(HANDLE opened) : handle(opened) {}
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { close(); }

    bool isOpen() const { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle; }
    bool close() {
        const HANDLE closing = isOpen() ? handle : nullptr;
        handle = nullptr;
        return closing != nullptr && CloseHandle(closing) != 0;
    }

private:
    HANDLE handle;
};

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

// The beginning of the names of devices, such as \\.\NUL. The system turns even NUL.pdf in any folder into \\.\NUL.
constexpr wchar_t devicePrefix[] = L"\\\\.\\";
// A name that begins with this may be longer than 260 characters. The system takes the rest of it as it stands.
constexpr wchar_t verbatimPrefix[] = L"\\\\?\\";

bool startsWith(const std::wstring &text, const wchar_t *prefix) {
    return text.rfind(prefix, 0) == 0;
}

// Returns the full name with verbatimPrefix, so that it may be longer than 260 characters whatever the settings of the
// system are. The name of a device stays without this prefix.
std::wstring longName(const std::string &fileName) {
    const std::wstring given = wideName(fileName);
    if (startsWith(given, verbatimPrefix)) {
        return given;
    }
    std::wstring full(MAX_PATH, L'\0');
    DWORD length = 0;
    while ((length = GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr)) >
           full.size()) {
        full.resize(length);
    }
    if (length == 0) {
        fail(fileName, GetLastError());
    }
    full.resize(length);
    if (startsWith(full, devicePrefix)) {
        return full;
    }
    if (startsWith(full, L"\\\\")) {  // on another computer
        return L"\\\\?\\UNC" + full.substr(1);
    }
    return verbatimPrefix + full;
}

// Returns the name of the file that a link leads to. Returns `name` if it is not a link or if there is no file yet.
std::wstring followLinks(const std::wstring &name, const std::string &fileName) {
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return name;
    }
    const Handle file(CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.isOpen()) {
        fail(fileName, GetLastError());
    }
    std::wstring resolved(MAX_PATH, L'\0');
    DWORD length = 0;
    while ((length = GetFinalPathNameByHandleW(file.get(), resolved.data(), static_cast<DWORD>(resolved.size()), 0)) >
           resolved.size()) {
        resolved.resize(length);
    }
    if (length == 0) {
        fail(fileName, GetLastError());
    }
    resolved.resize(length);
    return resolved;
}

// True if there is a file at the target. Throws FileWriteError if the target must not be replaced.
bool isSuitableTarget(const std::wstring &target, const std::string &fileName) {
    if (startsWith(target, devicePrefix)) {
        fail(fileName, ERROR_ACCESS_DENIED);
    }
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
    // A file that this user may not write must not be replaced, even if the folder's permissions would allow that. So
    // the file is opened for writing, as a test.
    const Handle file(CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isOpen()) {
        fail(fileName, GetLastError());
    }
    return true;
}

// Returns the file's folder, with a separator at the end.
std::wstring folderOf(const std::wstring &target) {
    return target.substr(0, target.find_last_of(L'\\') + 1);
}

std::wstring newTemporaryFile(const std::wstring &folder, std::random_device &random) {
    const std::string name = newTemporaryName(GetCurrentProcessId(), random);
    return folder + std::wstring(name.begin(), name.end());
}

// True if no running process of this computer has this number.
bool isGone(ProcessNumber number) {
    const Handle process(OpenProcess(SYNCHRONIZE, FALSE, number));
    if (!process.isOpen()) {
        return GetLastError() == ERROR_INVALID_PARAMETER;
    }
    return WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0;
}

// True if the file was written so long ago that no process can still be about to rename it. isGone() alone cannot tell
// whether a file is abandoned: in a shared folder, the process that wrote the file may run on another computer, and
// isGone() looks for its number only on this computer.
bool isOld(const FILETIME &written) {
    constexpr ULONGLONG tenMinutes = 10ULL * 60 * 10'000'000;  // in units of 100 ns
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const auto number = [](const FILETIME &time) {
        return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32U) | time.dwLowDateTime;
    };
    return number(written) + tenMinutes < number(now);
}

// Removes the files that killed processes have left in the folder. A file that is still being written is open, so it
// cannot be removed.
void removeAbandonedFiles(const std::wstring &folder) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((folder + L".lmlib64-*.tmp").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring wide(entry.cFileName);
        std::string name;
        for (const wchar_t character : wide) {
            name += character < 128 ? static_cast<char>(character) : '?';
        }
        const std::optional<ProcessNumber> writer = writerOf(name);
        if (writer && isGone(*writer) && isOld(entry.ftLastWriteTime)) {
            DeleteFileW((folder + wide).c_str());
        }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
}

// A new file beside the target. It is removed unless it is renamed.
class TemporaryFile {
public:
    TemporaryFile(const std::wstring &folder, const std::string &reportedName) : fileName(reportedName) {
        std::random_device random;
        HANDLE created = INVALID_HANDLE_VALUE;
        do {
            path = newTemporaryFile(folder, random);
            created = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        } while (created == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
        if (created == INVALID_HANDLE_VALUE) {
            fail(fileName, GetLastError());
        }
        file = std::make_unique<Handle>(created);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    ~TemporaryFile() {
        file.reset();
        if (!isRenamed) {
            DeleteFileW(path.c_str());
        }
    }

    void write(const std::string &bytes) {
        constexpr std::size_t largestBlock = 1U << 24U;
        for (std::size_t written = 0; written < bytes.size();) {
            const auto block = static_cast<DWORD>(std::min(bytes.size() - written, largestBlock));
            DWORD count = 0;
            if (WriteFile(file->get(), bytes.data() + written, block, &count, nullptr) == 0) {
                fail(fileName, GetLastError());
            }
            written += count;
        }
    }

    void flushAndClose() {
        if (FlushFileBuffers(file->get()) == 0 || !file->close()) {
            fail(fileName, GetLastError());
        }
    }

    // Returns 0 or the system's error. Allocates nothing.
    DWORD renameTo(const std::wstring &target, bool replacesFile) noexcept {
        // ReplaceFileW keeps the old file's access list, attributes and streams. Not every file system supports it.
        isRenamed = replacesFile && ReplaceFileW(target.c_str(), path.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                                                 nullptr, nullptr) != 0;
        if (!isRenamed) {
            isRenamed =
                MoveFileExW(path.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        }
        return isRenamed ? 0 : GetLastError();
    }

    [[noreturn]] void failBecauseOf(DWORD error) const { fail(fileName, error); }

private:
    std::string fileName;
    std::wstring path;
    std::unique_ptr<Handle> file;
    bool isRenamed = false;
};

// Makes the renaming itself permanent. The file is already complete and in place, so a failure here does not make the
// write fail.
void flushFile(const std::wstring &target) noexcept {
    const Handle file(CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.isOpen()) {
        FlushFileBuffers(file.get());
    }
}

}  // namespace

// One file, and what is needed to undo its renaming.
struct SafeFiles::Replacement {
    std::wstring target;
    std::unique_ptr<TemporaryFile> file;
    bool replacesFile = false;
    // A second name (a hard link) of the file that is replaced, with which undo() brings the file back. Empty if no
    // file is replaced, if only one file is written, or if no hard link could be made.
    std::wstring oldFile;

    // Brings back what was there before the renaming. If that fails, nothing more can be done.
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
    replacement.target = followLinks(longName(fileName), fileName);
    replacement.replacesFile = isSuitableTarget(replacement.target, fileName);
    const std::wstring folder = folderOf(replacement.target);
    if (replacements.size() == 1) {
        removeAbandonedFiles(folder);
    }
    replacement.file = std::make_unique<TemporaryFile>(folder, fileName);
    replacement.file->write(bytes);
    replacement.file->flushAndClose();
}

void SafeFiles::commit() {
    // If only one file is written and its renaming fails, there is no earlier renaming to undo. So no hard link to the
    // old file is needed.
    for (Replacement &replacement : replacements) {
        if (replacements.size() > 1 && replacement.replacesFile) {
            std::random_device random;
            std::wstring name = newTemporaryFile(folderOf(replacement.target), random);
            if (CreateHardLinkW(name.c_str(), replacement.target.c_str(), nullptr) != 0) {
                replacement.oldFile.swap(name);
            }
        }
    }
    for (std::size_t done = 0; done < replacements.size(); ++done) {
        Replacement &replacement = replacements[done];
        if (const DWORD error = replacement.file->renameTo(replacement.target, replacement.replacesFile); error != 0) {
            for (std::size_t i = 0; i < done; ++i) {
                replacements[i].undo();
            }
            replacement.file->failBecauseOf(error);
        }
    }
    for (const Replacement &replacement : replacements) {
        flushFile(replacement.target);
    }
}

}  // namespace file_writing

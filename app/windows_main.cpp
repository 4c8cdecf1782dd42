// The entry point of a Windows program without a console. Windows passes one wide-character command line; the program
// expects separate arguments in the system's code page.
#include <windows.h>
// shellapi.h must come after windows.h.
#include <shellapi.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "app/program.h"
#include "app/windows_start.h"

namespace {

using Argument = std::unique_ptr<char[]>;

Argument inSystemCodePage(const wchar_t *text) {
    const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    Argument argument = std::make_unique<char[]>(static_cast<std::size_t>(size) + 1);
    WideCharToMultiByte(CP_ACP, 0, text, -1, argument.get(), size, nullptr, nullptr);
    return argument;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    int count = 0;
    wchar_t **const wideArguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wideArguments == nullptr) {
        return -1;
    }
    // `arguments` owns the texts, and `vector` has pointers to them. The toolkit uses some of the arguments and removes
    // their pointers from `vector`.
    std::vector<Argument> arguments;
    std::vector<char *> vector;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(inSystemCodePage(wideArguments[i]));
        vector.push_back(arguments.back().get());
    }
    vector.push_back(nullptr);
    LocalFree(wideArguments);
    prepareProgram();
    return runProgram(count, vector.data());
}

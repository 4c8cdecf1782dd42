// Tests the Windows entry point on any platform. The functions of Windows are replaced.
#include <gtest/gtest.h>
#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "app/program.h"
#include "app/windows_start.h"

namespace {

std::wstring commandLine = L"the command line";
std::wstring programName = L"LmCalTab";
std::wstring price = L"1 \u20AC";
std::wstring option = L"--style";
std::array<wchar_t *, 3> splitArguments{programName.data(), price.data(), option.data()};
bool splitFails = false;
// The entry point's actions, in order.
std::vector<std::string> actions;

}  // namespace

wchar_t *GetCommandLineW() {
    return commandLine.data();
}

wchar_t **CommandLineToArgvW(const wchar_t *line, int *count) {
    EXPECT_EQ(line, commandLine.data());
    *count = static_cast<int>(splitArguments.size());
    return splitFails ? nullptr : splitArguments.data();
}

// In this stand-in, every character outside ASCII (here, the euro sign) becomes "E" in the system's code page, and "?"
// in any other code page.
int WideCharToMultiByte(unsigned codePage, unsigned /*flags*/, const wchar_t *text, int length, char *target, int size,
                        const char * /*defaultCharacter*/, int * /*usedDefaultCharacter*/) {
    EXPECT_EQ(length, -1);
    std::string bytes;
    for (const wchar_t character : std::wstring(text)) {
        bytes += character < 128 ? static_cast<char>(character) : codePage == CP_ACP ? 'E' : '?';
    }
    const int needed = static_cast<int>(bytes.size()) + 1;
    if (target != nullptr) {
        EXPECT_GE(size, needed);
        std::copy_n(bytes.c_str(), needed, target);
    }
    return needed;
}

void *LocalFree(void *memory) {
    EXPECT_EQ(memory, splitArguments.data());
    actions.emplace_back("free");
    return nullptr;
}

void prepareProgram() {
    actions.emplace_back("prepare");
}

int runProgram(int argc, char **argv) {
    actions.insert(actions.end(), argv, argv + argc);
    EXPECT_EQ(argv[argc], nullptr);
    return 7;
}

TEST(WindowsMain, runsTheProgramWithArgumentsInTheSystemsCodePage) {
    EXPECT_EQ(WinMain(nullptr, nullptr, nullptr, 0), 7);
    EXPECT_EQ(actions, (std::vector<std::string>{"free", "prepare", "LmCalTab", "1 E", "--style"}));

    actions.clear();
    splitFails = true;
    EXPECT_EQ(WinMain(nullptr, nullptr, nullptr, 0), -1);
    EXPECT_TRUE(actions.empty());
}

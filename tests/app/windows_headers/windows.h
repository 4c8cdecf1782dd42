// Declares the part of the Windows interface that the program's entry point uses, so that the entry point compiles on
// other systems.
#pragma once

#define WINAPI
#define CP_ACP 0

using HINSTANCE = void *;
using LPSTR = char *;

wchar_t *GetCommandLineW();
int WideCharToMultiByte(unsigned codePage, unsigned flags, const wchar_t *text, int length, char *target, int size,
                        const char *defaultCharacter, int *usedDefaultCharacter);
void *LocalFree(void *memory);
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR commandLine, int showCommand);

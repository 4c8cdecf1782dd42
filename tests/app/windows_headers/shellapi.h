#pragma once

wchar_t **CommandLineToArgvW(const wchar_t *commandLine, int *count);

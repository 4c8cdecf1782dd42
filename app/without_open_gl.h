// While an object of this class exists, windows open without the desktop's OpenGL. The program does not draw with it,
// and on X11 setting it up takes as long as everything else that an empty window needs.
//
// The X11 plugin reads the environment variable once, for the first window. The variable is removed again afterwards,
// so processes started later do not inherit it. If the user has set it, it stays as it is. Other platforms ignore it.
#pragma once

#include <QtGlobal>

class WithoutOpenGl {
public:
    WithoutOpenGl() : chosenHere(!qEnvironmentVariableIsSet(variable)) {
        if (chosenHere) {
            qputenv(variable, "none");
        }
    }
    ~WithoutOpenGl() {
        if (chosenHere) {
            qunsetenv(variable);
        }
    }
    WithoutOpenGl(const WithoutOpenGl &) = delete;
    WithoutOpenGl &operator=(const WithoutOpenGl &) = delete;

private:
    static constexpr const char *variable = "QT_XCB_GL_INTEGRATION";
    const bool chosenHere;
};

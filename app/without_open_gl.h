// While an object of this class exists, windows open without the desktop's OpenGL. The program does not draw with
// OpenGL, and on X11 its set-up takes as long as everything else that an empty window needs.
//
// The X11 plugin reads the environment variable once, for the first window. The destructor removes the variable, so
// that processes started later do not inherit it. A variable that the user has set stays unchanged. Other platforms
// ignore the variable.
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

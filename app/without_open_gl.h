// If the program's first window opens while an object of this class exists, the toolkit does not set up OpenGL. The
// program does not draw with OpenGL. On X11, setting up OpenGL takes as long as all the other work of opening an empty
// window.
//
// The constructor sets the environment variable QT_XCB_GL_INTEGRATION, which the toolkit's X11 plugin reads only for
// the first window. The destructor removes the variable, so that processes started later do not inherit it. If the user
// has set the variable, it stays unchanged. Other platforms ignore the variable.
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

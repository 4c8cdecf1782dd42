// While an object of this class exists, windows open without the desktop's OpenGL. The program does not draw with
// OpenGL. On X11, setting up OpenGL takes as long as everything else that an empty window needs.
//
// The toolkit's X11 plugin reads the environment variable QT_XCB_GL_INTEGRATION once, for the first window. The
// destructor removes the variable, so that processes started later do not inherit it. If the user has set the variable,
// it stays unchanged. Other platforms ignore it.
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

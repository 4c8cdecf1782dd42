// While it lives, windows open without the desktop's OpenGL. Nothing in the program draws with it, and setting it up
// takes X11 as long as all else that an empty window needs.
//
// The X11 plugin asks once, for the first window; what the program starts later finds the environment as it was. A
// choice that the user has made stays. Other platforms do not look.
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

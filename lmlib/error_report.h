// How a failure of the camera library is shown to the user. Called from a handler that catches LmLibException,
// in every slot that runs library work.
#pragma once

class LmLibException;

// Shows, modally, what failed and the node concerned; returns when the user has closed the box. Nothing in the
// library's tree can make it fail: what cannot be read is left out. On any other thread than the application's
// it shows nothing and rethrows the exception being handled.
void showErrorReport(const LmLibException &exception);

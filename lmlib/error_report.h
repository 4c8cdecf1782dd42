// Shows the user a failure of the camera library. Every slot that uses the library catches LmLibException and calls
// this from the handler.
#pragma once

class LmLibException;

// Shows what failed and the node concerned in a modal box, and returns when the user has closed it. Does not fail if
// parts of the library's tree cannot be read; it leaves them out. On any thread except the application's it shows
// nothing and rethrows the exception being handled.
void showErrorReport(const LmLibException &exception);

// Shows a failure of the camera library to the user. Every Qt slot that uses the library catches LmLibException and
// calls this function from the handler.
#pragma once

class LmLibException;

// Shows the failure and the value of its node in a modal box, and returns when the user has closed the box. Parts of
// the library's tree that cannot be read are left out. On any thread except the application's, or without an
// application, it shows nothing and rethrows the exception that is being handled.
void showErrorReport(const LmLibException &exception);

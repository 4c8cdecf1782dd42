// Shows a failure of the camera library to the user. Every Qt slot that uses the library catches LmLibException and
// calls this function from the handler.
#pragma once

class LmLibException;

// Opens a modal box that shows the failure and the value of the library node at which it occurred. Returns when the
// user has closed the box. If the node's value cannot be read, the box shows "Unavailable" instead. If the texts of a
// failed command cannot be read, they are left out. On any thread except the application's, or without an application,
// this function shows nothing and rethrows the exception that is being handled.
void showErrorReport(const LmLibException &exception);

// Tells whether standard error is a terminal.
#pragma once

bool isErrorTerminal();

// The placeholders of tool-tip texts: "%MANUAL%" stands for the address of the manual.
//
// The tool tip replaces the placeholders in its texts. Other code that needs the address calls replacePlaceholders()
// itself. It is not checked whether the page behind a link exists.
//
// Use these functions only on the GUI thread. Each process has one table of placeholders and their replacements. It is
// written once at start-up and only read afterwards. All its strings are UTF-8.
#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

// A placeholder and its replacement.
using Placeholder = std::pair<std::string, std::string>;

// The pairs, in the order in which they are applied.
using PlaceholderTable = std::vector<Placeholder>;

// Returns "%MANUAL%" and the root of the manual, without a "/" at its end. If an index.html can be opened in the folder
// that the camera library publishes as /Path/Manual, the root is "file:///" followed by that folder. Otherwise the root
// is the address of the online manual. This never fails, and the root is never empty.
Placeholder makeManualPlaceholder();

// Replaces the table of the process.
void setPlaceholderTable(PlaceholderTable table);

// Replaces every occurrence of every placeholder, in the order of the table. Upper and lower case are distinguished.
QString replacePlaceholders(QString text);

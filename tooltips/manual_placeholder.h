// The placeholders of tool-tip texts: "%MANUAL%" stands for the address of the manual.
//
// Placeholders are replaced only in tool-tip texts. Nothing checks that the page behind a link exists.
//
// GUI thread only. The table is written once at start-up and only read afterwards. Both strings of a pair are UTF-8.
#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

// A placeholder and its replacement.
using Placeholder = std::pair<std::string, std::string>;

// Pairs in the order in which they are applied.
using PlaceholderTable = std::vector<Placeholder>;

// "%MANUAL%" and the root of the manual, without a "/" at its end. If an index.html can be opened in the folder that
// the camera library publishes as /Path/Manual, the root is "file:///" and that folder; otherwise it is the address of
// the online manual. Never fails, and the root is never empty.
Placeholder makeManualPlaceholder();

// Replaces the table of the process.
void setPlaceholderTable(PlaceholderTable table);

// The text with every occurrence of every placeholder replaced, in table order. Case matters.
QString replacePlaceholders(QString text);

// The placeholders of tool-tip texts: "%MANUAL%" stands for wherever the manual is.
//
// The table is applied to tool-tip texts only; no other text of the program is substituted. It does not
// check that the page behind a link exists.
//
// Everything here runs on the GUI thread. The table is written once at start-up and only read afterwards.
// Both strings of a pair are UTF-8.
#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

// A placeholder and what it is replaced by.
using Placeholder = std::pair<std::string, std::string>;

// Pairs in the order in which they are applied.
using PlaceholderTable = std::vector<Placeholder>;

// "%MANUAL%" and the root of the manual, without a "/" at its end: "file:///" and the folder that the
// camera library publishes as /Path/Manual when an index.html can be opened in it, and the address of the
// online manual otherwise. Never fails and never gives an empty root.
Placeholder makeManualPlaceholder();

// Replaces the table of the process.
void setPlaceholderTable(PlaceholderTable table);

// The text with every occurrence of every placeholder replaced, case-sensitively and in table order.
QString replacePlaceholders(QString text);

// The formats in which patterns are saved. file_formats.cpp has the only list of the formats. This list determines
// which file names are accepted, which endings are named in error texts, and which function makes a file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "camera_library/output/pattern_document.h"
#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// A format has one of the two functions; the other is null. The same document always gives the same bytes. Both
// functions may throw PatternTooLarge and std::bad_alloc.
struct FileFormat {
    std::string_view ending;                                    // in lower case, with its dot
    std::string (*wholeFile)(const PatternDocument &document);  // all patterns in one file
    // Returns the file of one page. A document of several pages gets numbered files.
    std::string (*pageFile)(const PrintedPage &page, const PatternDocument &document);
};

// All formats, to iterate over.
class FileFormats {
public:
    const FileFormat *begin() const;
    const FileFormat *end() const;
};

// Returns the format that the name's ending selects; null if there is none. The ending may be in upper or lower case.
const FileFormat *findFileFormat(std::string_view fileName);

// Returns all endings, for an error text, in the form ".pdf, .json or .svg".
std::string fileEndings();

// Returns the file names for `count` pages. For name.svg, one page gets the name itself; several pages get name-00.svg,
// name-01.svg, ...
std::vector<std::string> pageFileNames(const std::string &fileName, std::size_t count);

}  // namespace lmlib64

// The formats in which patterns are saved. file_formats.cpp has the table of them; the check of a file's name, the
// texts of errors, the choice of the writer and the tests all take it from there.
#pragma once

#include <string>
#include <string_view>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

struct FileFormat {
    std::string_view ending;    // in lower case, with its dot
    bool holdsSeveralPatterns;  // false: a document of more than one pattern is refused
    // The bytes of the file. The same document gives the same bytes. Throws PatternTooLarge and std::bad_alloc.
    std::string (*contents)(const PatternDocument &document);
};

// All formats, to iterate over.
class FileFormats {
public:
    const FileFormat *begin() const;
    const FileFormat *end() const;
};

// The format that the name's ending selects, upper and lower case alike; null if there is none.
const FileFormat *findFileFormat(std::string_view fileName);

// All endings, as a text lists them: ".pdf or .json".
std::string fileEndings();

}  // namespace lmlib64

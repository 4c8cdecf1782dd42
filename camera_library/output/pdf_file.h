// Writes a PDF file: one object after the other, and at the end the table of their offsets. It does not know what the
// objects mean.
//
// An object is referred to by its number. Its body is in PDF notation.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lmlib64 {

class PdfFile {
public:
    PdfFile();

    // Reserves a number for an object that is written later, by `write`.
    int reserve();
    void write(int number, std::string_view body);

    // Writes an object and returns its number.
    int add(std::string_view body);

    // The same for a stream. The data is compressed here, so `entries` are those of the dictionary except its length
    // and its filter. Throws std::bad_alloc.
    int addStream(std::string_view entries, std::string_view data);

    // The whole file; `catalogue` and `information` are the numbers of these objects. The same objects give the same
    // bytes. After this call the PdfFile must not be used any more.
    std::string finish(int catalogue, int information);

private:
    std::string bytes;
    std::vector<std::size_t> offsets;  // of the objects 1, 2, …; 0 if one is not written yet
};

// The reference to an object, for the body of another one.
std::string pdfReference(int number);

// A text in PDF notation. The encoding of its bytes depends on where it is used.
std::string pdfText(std::string_view bytes);

}  // namespace lmlib64

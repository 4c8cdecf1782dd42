// Writes a PDF file: one object after the other, and then the table of their offsets. The caller makes the body of each
// object in PDF notation. Objects refer to each other by their numbers.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lmlib64 {

class PdfFile {
public:
    PdfFile();

    // Reserves a number, so that other objects can refer to an object before `write` writes it.
    int reserve();
    // Writes the object of a reserved number.
    void write(int number, std::string_view body);

    // Writes an object and returns its number.
    int add(std::string_view body);

    // Compresses the data, writes it as a stream and returns the stream's number. `entries` are the entries of the
    // stream's dictionary without length and filter. Throws std::bad_alloc.
    int addStream(std::string_view entries, std::string_view data);

    // Returns the whole file. `catalogue` and `information` are the numbers of the document catalogue and of the
    // document information. The same objects give the same bytes. The PdfFile must not be used after this call.
    std::string finish(int catalogue, int information);

private:
    std::string bytes;
    std::vector<std::size_t> offsets;  // of the objects 1, 2, …; 0 until the object is written
};

// Returns a reference to the object with this number, for the body of another object.
std::string pdfReference(int number);

// Returns the bytes as a string in PDF notation. The caller must use the encoding that PDF prescribes for the place
// where the string is used.
std::string pdfText(std::string_view bytes);

}  // namespace lmlib64

// A PDF file as it is written: objects one after the other, and at its end where each of them stands. What the objects
// are is not known here.
//
// An object is referred to by the number that it gets here; its body is PDF's own notation.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lmlib64 {

class PdfFile {
public:
    PdfFile();

    // A number for an object that is written later, by `write`.
    int reserve();
    void write(int number, std::string_view body);

    // Writes an object and returns its number.
    int add(std::string_view body);

    // The same for a stream: `entries` are those of its dictionary but for its length and its filter, as the data is
    // compressed here. Throws std::bad_alloc.
    int addStream(std::string_view entries, std::string_view data);

    // The whole file, with the objects of these numbers as its catalogue and its information. The same objects give
    // the same bytes. The object is of no more use.
    std::string finish(int catalogue, int information);

private:
    std::string bytes;
    std::vector<std::size_t> offsets;  // of the objects 1, 2, …; 0 where one is not written yet
};

// What stands for an object in another one's body.
std::string pdfReference(int number);

// A text in PDF's notation. Its bytes are in an encoding that depends on where it stands.
std::string pdfText(std::string_view bytes);

}  // namespace lmlib64

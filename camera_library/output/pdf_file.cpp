#include "camera_library/output/pdf_file.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "camera_library/output/deflater.h"

namespace lmlib64 {

namespace {

// Returns the FNV-1a hash as 16 hexadecimal digits.
std::string hashText(std::string_view data, std::uint64_t hash) {
    for (const char byte : data) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

}  // namespace

// The second line has bytes beyond ASCII, so that programs do not mistake the file for text.
PdfFile::PdfFile() : bytes("%PDF-1.7\n%\xc2\xb5\xc2\xb6\n") {}

int PdfFile::reserve() {
    offsets.push_back(0);
    return static_cast<int>(offsets.size());
}

void PdfFile::write(int number, std::string_view body) {
    offsets.at(static_cast<std::size_t>(number) - 1) = bytes.size();
    bytes.append(std::to_string(number)).append(" 0 obj\n").append(body).append("\nendobj\n");
}

int PdfFile::add(std::string_view body) {
    const int number = reserve();
    write(number, body);
    return number;
}

int PdfFile::addStream(std::string_view entries, std::string_view data) {
    const std::string compressed = Deflater(Repetitions::Anywhere).deflated(data);
    std::string body = "<< ";
    body.append(entries).append(" /Filter /FlateDecode /Length ").append(std::to_string(compressed.size()));
    body.append(" >>\nstream\n").append(compressed).append("\nendstream");
    return add(body);
}

std::string PdfFile::finish(int catalogue, int information) {
    // The identifier should have 16 bytes, so it consists of two hashes of 8 bytes with different start values.
    const std::string identifier =
        "<" + hashText(bytes, 0xcbf29ce484222325U) + hashText(bytes, 0x9e3779b97f4a7c15U) + ">";
    const std::size_t tableOffset = bytes.size();
    const std::string size = std::to_string(offsets.size() + 1);
    bytes += "xref\n0 " + size + "\n0000000000 65535 f \n";
    for (const std::size_t offset : offsets) {
        if (offset == 0) {
            throw std::logic_error("An object of the PDF has not been written.");
        }
        constexpr std::size_t digits = 10;  // the format prescribes ten digits, which limits the size of the file
        const std::string place = std::to_string(offset);
        bytes.append(digits - place.size(), '0').append(place).append(" 00000 n \n");
    }
    bytes += "trailer\n<< /Size " + size + " /Root " + pdfReference(catalogue) + " /Info " + pdfReference(information) +
             " /ID [" + identifier + " " + identifier + "] >>\nstartxref\n" + std::to_string(tableOffset) + "\n%%EOF\n";
    return std::move(bytes);
}

std::string pdfReference(int number) {
    return std::to_string(number) + " 0 R";
}

std::string pdfText(std::string_view bytes) {
    std::string text = "(";
    for (const char byte : bytes) {
        if (byte == '(' || byte == ')' || byte == '\\') {
            text += '\\';
        }
        text += byte;
    }
    return text + ")";
}

}  // namespace lmlib64

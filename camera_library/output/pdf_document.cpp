#include "camera_library/output/pdf_document.h"

#include <cstddef>
#include <new>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <stdexcept>

#include "camera_library/output/pattern_text.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double pointsPerMm = 72.0 / 25.4;

QPDFObjectHandle realNumber(double value) {
    // Twelve decimals: over the largest page the scale is then off by far less than an atom.
    return QPDFObjectHandle::newReal(value, 12);
}

void scaleToPoints(QPDF &pdf, QPDFPageObjectHelper &page, const PageLayout &layout) {
    const std::string scale = realNumber(pointsPerMm / pageUnitsPerMm).unparse();
    const std::string matrix = "q " + scale + " 0 0 " + scale + " 0 0 cm\n";
    // Streams of their own: joined with the page's, that would have to be compressed once more.
    page.addPageContents(QPDFObjectHandle::newStream(&pdf, matrix), true);
    page.addPageContents(QPDFObjectHandle::newStream(&pdf, "\nQ\n"), false);

    QPDFObjectHandle dictionary = page.getObjectHandle();
    dictionary.replaceKey("/MediaBox", QPDFObjectHandle::newArray({
                                           QPDFObjectHandle::newInteger(0),
                                           QPDFObjectHandle::newInteger(0),
                                           QPDFObjectHandle::newReal(layout.width * pointsPerMm, 6),
                                           QPDFObjectHandle::newReal(layout.height * pointsPerMm, 6),
                                       }));
    // Nothing on the page is transparent; without the group that Cairo declares, printers need not blend.
    dictionary.removeKey("/Group");
}

void describeDocument(QPDF &pdf, const std::string &title) {
    QPDFObjectHandle information = QPDFObjectHandle::newDictionary();
    information.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(title));
    information.replaceKey("/Creator", QPDFObjectHandle::newUnicodeString(libraryName()));
    pdf.getTrailer().replaceKey("/Info", pdf.makeIndirectObject(information));

    QPDFObjectHandle preferences = QPDFObjectHandle::newDictionary();
    preferences.replaceKey("/PrintScaling", QPDFObjectHandle::newName("/None"));
    preferences.replaceKey("/PickTrayByPDFSize", QPDFObjectHandle::newBool(true));
    preferences.replaceKey("/DisplayDocTitle", QPDFObjectHandle::newBool(true));
    pdf.getRoot().replaceKey("/ViewerPreferences", preferences);
}

void attach(QPDF &pdf, const std::string &patternJson) {
    const std::string name = "pattern.json";
    QPDFEFStreamObjectHelper stream = QPDFEFStreamObjectHelper::createEFStream(pdf, patternJson);
    stream.setSubtype("application/json");
    QPDFFileSpecObjectHelper file = QPDFFileSpecObjectHelper::createFileSpec(pdf, name, stream);
    file.setDescription("The pattern's parameters and points");
    file.getObjectHandle().replaceKey("/AFRelationship", QPDFObjectHandle::newName("/Data"));
    QPDFEmbeddedFileDocumentHelper(pdf).replaceEmbeddedFile(name, file);
}

std::string write(QPDF &pdf) {
    QPDFWriter writer(pdf);
    writer.setOutputMemory();
    writer.setDeterministicID(true);
    writer.setObjectStreamMode(qpdf_o_generate);
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char *>(buffer->getBuffer()), buffer->getSize()};
}

// The drawn pages with everything that Cairo does not write.
std::string finish(QPDF &pdf, const std::string &drawn, const std::vector<PrintedPage> &pages, const std::string &title,
                   const std::string &patternJson) {
    pdf.processMemoryFile("drawn pages", drawn.data(), drawn.size());
    std::size_t index = 0;
    for (QPDFPageObjectHelper &page : QPDFPageDocumentHelper(pdf).getAllPages()) {
        scaleToPoints(pdf, page, pages[index].layout);
        ++index;
    }
    describeDocument(pdf, title);
    attach(pdf, patternJson);
    return write(pdf);
}

// What draws the texts, and some of qpdf's destructors, end the process where they get no memory. So all that they
// will need, and more, is asked for before: for the fonts, and several times the document.
void makeSureOfMemory(const std::string &patternJson) {
    constexpr std::size_t forFonts = std::size_t{64} << 20U;
    // Called like this, and not by an expression, the two are never left out as without effect.
    ::operator delete(::operator new(forFonts + 32 * patternJson.size()));
}

// qpdf makes texts of what goes wrong while it reads, the want of memory included.
[[noreturn]] void fail(const std::string &reason) {
    if (reason.find("bad_alloc") != std::string::npos) {
        throw std::bad_alloc();
    }
    throw std::runtime_error(reason);
}

}  // namespace

std::string makePdf(const std::vector<PrintedPage> &pages, const std::string &title, const std::string &patternJson) {
    makeSureOfMemory(patternJson);
    const std::string drawn = drawPdfPages(pages);
    QPDF pdf;
    pdf.setSuppressWarnings(true);
    // The pages are as Cairo has written them, so that there is nothing to mend, and every warning is a failure: an
    // object that cannot be read is taken for null with no more than that.
    pdf.setAttemptRecovery(false);
    std::string bytes;
    std::string failure;
    try {
        bytes = finish(pdf, drawn, pages, title, patternJson);
    } catch (const std::runtime_error &error) {  // of which QPDFExc is one
        failure = error.what();
    }
    if (pdf.anyWarnings()) {
        fail(pdf.getWarnings().front().what());
    }
    if (!failure.empty()) {
        fail(failure);
    }
    return bytes;
}

}  // namespace lmlib64

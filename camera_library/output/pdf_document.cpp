#include "camera_library/output/pdf_document.h"

#include <cstddef>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

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

}  // namespace

std::string makePdf(const std::vector<PrintedPage> &pages, const std::string &title, const std::string &patternJson) {
    const std::string drawn = drawPdfPages(pages);
    QPDF pdf;
    pdf.setSuppressWarnings(true);
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

}  // namespace lmlib64

#include "camera_library/output/pdf_document.h"

#include "camera_library/output/caption_font.h"
#include "camera_library/output/document_pages.h"
#include "camera_library/output/pattern_json.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/output/pdf_file.h"
#include "camera_library/output/pdf_page.h"

namespace lmlib64 {

namespace {

// Adds the font of the captions and returns its number. The metrics serve viewers that cannot use the embedded font.
int addFont(PdfFile &pdf) {
    const std::string_view font = captionFontFile();
    const int file = pdf.addStream("/Length1 " + std::to_string(font.size()), font);
    const std::string name = "/LMCALT+DejaVuSans";  // the prefix marks a font with only some of its characters
    const int descriptor =
        pdf.add("<< /Type /FontDescriptor /FontName " + name +
                " /Flags 32 /FontBBox [-1021 -463 1793 1232] /ItalicAngle 0 /Ascent 928 /Descent -236"
                " /CapHeight 729 /StemV 90 /FontFile2 " +
                pdfReference(file) + " >>");
    std::string widths;
    for (int character = firstCaptionCharacter; character <= lastCaptionCharacter; ++character) {
        widths += character % 16 == 0 ? '\n' : ' ';  // PDF allows at most 255 characters per line
        widths += std::to_string(captionAdvance(static_cast<unsigned char>(character)));
    }
    return pdf.add("<< /Type /Font /Subtype /TrueType /BaseFont " + name + " /Encoding /WinAnsiEncoding /FirstChar " +
                   std::to_string(firstCaptionCharacter) + " /LastChar " + std::to_string(lastCaptionCharacter) +
                   " /Widths [" + widths + " ] /FontDescriptor " + pdfReference(descriptor) + " >>");
}

int addPages(PdfFile &pdf, const std::vector<PrintedPage> &pages) {
    const std::string font = pdfReference(addFont(pdf));
    const int tree = pdf.reserve();
    std::string kids;
    for (const PrintedPage &page : pages) {
        const int contents = pdf.addStream("", pdfPageContents(page));
        const int number =
            pdf.add("<< /Type /Page /Parent " + pdfReference(tree) + " /MediaBox [0 0 " + pdfPoints(page.paper.width) +
                    " " + pdfPoints(page.paper.height) + "] /Resources << /Font << " + captionFontName + " " + font +
                    " >> >> /Contents " + pdfReference(contents) + " >>");
        kids += "\n" + pdfReference(number);
    }
    pdf.write(tree, "<< /Type /Pages /Count " + std::to_string(pages.size()) + " /Kids [" + kids + " ] >>");
    return tree;
}

int addAttachment(PdfFile &pdf, const std::string &json) {
    const int stream = pdf.addStream(
        "/Type /EmbeddedFile /Subtype /application#2Fjson /Params << /Size " + std::to_string(json.size()) + " >>",
        json);
    const std::string reference = pdfReference(stream);
    return pdf.add(
        "<< /Type /Filespec /F (pattern.json) /UF (pattern.json) /Desc (The pattern's parameters and points)"
        " /EF << /F " +
        reference + " /UF " + reference + " >> >>");
}

std::string titleOf(const PatternDocument &document) {
    const std::string first = patternTitle(document.patterns.front().description);
    const std::size_t others = document.patterns.size() - 1;
    return others == 0 ? first : first + " and " + std::to_string(others) + " more";
}

}  // namespace

std::string patternPdf(const PatternDocument &document) {
    // All pages are laid out before anything is written, so that no work is lost if a pattern is too large.
    const std::vector<PrintedPage> pages = pagesOf(document);
    PdfFile pdf;
    const int tree = addPages(pdf, pages);
    const std::string attachment = pdfReference(addAttachment(pdf, patternJson(document)));
    const int catalogue =
        pdf.add("<< /Type /Catalog /Pages " + pdfReference(tree) +
                " /ViewerPreferences << /PrintScaling /None /PickTrayByPDFSize true /DisplayDocTitle true >>"
                " /Names << /EmbeddedFiles << /Names [(pattern.json) " +
                attachment + "] >> >> >>");
    // PDF prescribes an encoding for the document information. It differs from the encoding of the captions' font, but
    // all characters that captions use have the same bytes in both.
    const int information = pdf.add("<< /Title " + pdfText(captionText(titleOf(document))) + " /Creator " +
                                    pdfText(captionText(libraryName())) + " >>");
    return pdf.finish(catalogue, information);
}

}  // namespace lmlib64

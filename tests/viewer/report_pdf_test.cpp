// Tests the PDF of a report. LmView makes this PDF from the report's web page. The tests make PDFs from small web pages
// with the same structure, and read them with the programs pdftotext and pdftoppm.
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "viewer/report_document.h"
#include "viewer/report_pdf.h"

namespace {

// Returns numbered paragraphs that fill several pages.
std::string filling(int count) {
    std::string html;
    for (int i = 0; i < count; ++i) {
        html += "<p>Paragraph number" + std::to_string(i) + " of the report.</p>\n";
    }
    return html;
}

std::string figure(const std::string &name, const std::string &caption) {
    return "<figure><h4>" + name +
           "</h4>\n<svg viewBox=\"0 0 400 200\"><rect class=\"bar\" x=\"0\" y=\"0\" width=\"400\" height=\"200\"/>"
           "</svg><figcaption>" +
           caption + "</figcaption></figure>\n";
}

std::string pageWith(const std::string &verdict, const std::string &content) {
    return "<html><head><title>My report</title></head><body><main><header><h1>My report</h1></header>"
           "<section class=\"verdict " +
           verdict + "\"><div class=\"sign\">!</div><div><h2>Title</h2><p>Text of the verdict.</p></div></section>\n" +
           content + "</main></body></html>";
}

QString output(const QString &program, const QStringList &arguments, const QString &folder) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    return process.waitForFinished() ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}

// Writes the PDF and returns the text of each of its pages.
QStringList textsOf(const std::string &page, const QTemporaryDir &folder) {
    QFile file(folder.filePath("report.pdf"));
    if (!file.open(QIODevice::WriteOnly) || file.write(reportPdf(page)) <= 0) {
        return {};
    }
    file.close();
    QStringList pages;
    for (const QString &text : output("pdftotext", {"-layout", "report.pdf", "-"}, folder.path()).split('\f')) {
        pages << text.simplified();
    }
    pages.removeLast();  // every page ends with a form feed
    return pages;
}

// Returns the number of pixels on the first page that have nearly this colour.
int pixelsLike(const QColor &wanted, const QTemporaryDir &folder) {
    output("pdftoppm", {"-r", "144", "-f", "1", "-l", "1", "-png", "-singlefile", "report.pdf", "page"}, folder.path());
    const QImage picture(folder.filePath("page.png"));
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor found = picture.pixelColor(x, y);
            count += qAbs(found.red() - wanted.red()) + qAbs(found.green() - wanted.green()) +
                                 qAbs(found.blue() - wanted.blue()) <
                             20
                         ? 1
                         : 0;
        }
    }
    return count;
}

const QColor red("#b3261e");
const QColor green("#17733c");
const QColor barColour("#4b86c2");

}  // namespace

class ReportPdfTest : public QObject {
    Q_OBJECT

private slots:
    void hasEveryPartInOrder();
    void drawsFiguresWithTheirCaptions();
    void showsGradesAndLeftOutRowsInColour();
    void keepsTheFormOfTables();
    void refusesAPageThatIsNotXml();
};

void ReportPdfTest::hasEveryPartInOrder() {
    const QTemporaryDir folder;
    constexpr int count = 120;
    const QStringList pages = textsOf(pageWith("good", filling(count)), folder);
    QVERIFY(pages.size() >= 3);
    QString whole;
    for (int i = 0; i < pages.size(); ++i) {
        const QString number = QString("%1/%2").arg(i + 1).arg(pages.size());
        QVERIFY2(QString(pages[i]).remove(' ').endsWith(number) && pages[i].contains("My report"),
                 qPrintable(pages[i]));
        whole += pages[i] + " ";
    }
    int at = 0;
    for (int i = 0; i < count; ++i) {
        const QString part = QString("number%1 of").arg(i);
        const int found = whole.indexOf(part, at);
        QVERIFY2(found >= at, qPrintable(part));
        at = found;
    }
}

void ReportPdfTest::drawsFiguresWithTheirCaptions() {
    const QTemporaryDir folder;
    const std::string figures = "<div class=\"figures\">" + figure("Alpha", "Less is &lt; 1 px &amp; good.") +
                                figure("Beta", "A second one.") + "</div>";
    const QStringList pages = textsOf(pageWith("good", figures), folder);
    QCOMPARE(pages.size(), 1);
    for (const char *part : {"Alpha", "Beta", "Less is < 1 px & good.", "A second one."}) {
        QVERIFY2(pages[0].contains(part), qPrintable(part + (" is not in " + pages[0])));
    }
    // The two figures are beside each other. Each is 86 mm wide, which is 487 pixels here, and half as high.
    const int bars = pixelsLike(barColour, folder);
    QVERIFY2(bars > 2 * 470 * 235 && bars < 2 * 500 * 250, qPrintable(QString::number(bars)));
}

void ReportPdfTest::showsGradesAndLeftOutRowsInColour() {
    const QTemporaryDir folder;
    QVERIFY(!textsOf(pageWith("poor", ""), folder).isEmpty());
    QVERIFY(pixelsLike(red, folder) > 500 && pixelsLike(green, folder) == 0);
    QVERIFY(!textsOf(pageWith("good", ""), folder).isEmpty());
    QVERIFY(pixelsLike(green, folder) > 500 && pixelsLike(red, folder) == 0);
    const std::string row = "<td>WWWWWWWWWWWWWWWWWWWWWWWWWWWWWW</td></tr>";
    QVERIFY(
        !textsOf(pageWith("good", "<table><tbody><tr>" + row + "<tr class=\"out\">" + row + "</tbody></table>"), folder)
             .isEmpty());
    QVERIFY(pixelsLike(red, folder) > 20);
}

void ReportPdfTest::keepsTheFormOfTables() {
    const ReportDocument document = reportDocument(
        pageWith("good",
                 "<table><caption>Sizes</caption><thead><tr><th>Name</th><th class=\"n\">mm</th></tr></thead><tbody>"
                 "<tr><td>a &lt; b</td><td class=\"n\">12</td></tr><tr><td colspan=\"2\">Nothing.</td></tr>"
                 "</tbody></table>"));
    QCOMPARE(document.title, QString("My report"));
    const QString html = document.html;
    const QString cells = html.mid(html.indexOf("<thead>"));
    QCOMPARE(cells.count("<tr>"), 3);
    for (const char *part : {"<b>Sizes</b>", "a &lt; b", "<td align=\"right\">12</td>", "colspan=\"2\">Nothing."}) {
        QVERIFY2(html.contains(part), qPrintable(part + (" is not in " + html)));
    }
}

void ReportPdfTest::refusesAPageThatIsNotXml() {
    QVERIFY(reportDocument("<html><main><p>broken</main></html>").html.isEmpty());
    QVERIFY(reportPdf("<html><main><p>broken</main></html>").isEmpty());
}

QTEST_MAIN(ReportPdfTest)
#include "report_pdf_test.moc"

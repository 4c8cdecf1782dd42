// Follows every link and picture of the built manual, starting at its first page, as a browser would.
#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>

#include "tests/value_printing.h"

namespace {

const QDir root{LMCALTAB_MANUAL};

QString contentsOf(const QString &fileName) {
    QFile file(root.filePath(fileName));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The values of an attribute in a page, in order.
QStringList valuesOf(const QString &attribute, const QString &html) {
    QStringList values;
    auto match = QRegularExpression("\\s" + attribute + "=\"([^\"]*)\"").globalMatch(html);
    while (match.hasNext()) {
        values << match.next().captured(1);
    }
    return values;
}

// The file that an address on a page refers to, without the part after "#".
QString targetOf(const QString &page, const QString &address) {
    const QString file = address.section('#', 0, 0);
    return file.isEmpty() ? page : QDir::cleanPath(QFileInfo(page).path() + "/" + file);
}

void expectSoundPictures(const QString &page, const QString &html) {
    auto match = QRegularExpression("<img\\s[^>]*>").globalMatch(html);
    while (match.hasNext()) {
        const QString element = match.next().captured();
        const QString file = targetOf(page, valuesOf("src", element).value(0));
        EXPECT_FALSE(valuesOf("alt", element).value(0).isEmpty()) << qPrintable(element);
        if (file.endsWith(".svg")) {
            QXmlStreamReader reader(contentsOf(file));
            bool holdsPicture = false;
            while (!reader.atEnd()) {
                reader.readNext();
                const QString address = reader.attributes().value("href").toString();
                const QByteArray png = QByteArray::fromBase64(address.section(',', 1).toLatin1());
                holdsPicture = holdsPicture || !QImage::fromData(png, "PNG").isNull();
            }
            EXPECT_TRUE(!reader.hasError() && holdsPicture) << qPrintable(file);
        } else {
            // The picture must have the size that the page reserves for it.
            EXPECT_EQ(QImage(root.filePath(file)).size(),
                      QSize(valuesOf("width", element).value(0).toInt(), valuesOf("height", element).value(0).toInt()));
        }
    }
}

TEST(Manual, hasLinksToAllItsFilesAndNoneToOtherPlaces) {
    QStringList open{"index.html"};
    QSet<QString> reached;
    while (!open.isEmpty()) {
        const QString page = open.takeFirst();
        const QString contents = contentsOf(page);
        EXPECT_FALSE(contents.isEmpty()) << qPrintable(page);
        const QRegularExpression loader(page.endsWith(".css") ? "url\\(|@import" : "<script|<iframe");
        EXPECT_FALSE(contents.contains(loader)) << qPrintable(page);
        reached << page;
        QStringList ids = valuesOf("id", contents);
        EXPECT_EQ(ids.removeDuplicates(), 0) << qPrintable(page);
        expectSoundPictures(page, contents);
        for (const QString &address : valuesOf("href", contents) + valuesOf("src", contents)) {
            SCOPED_TRACE(qPrintable(page + ": " + address));
            if (page.endsWith(".svg")) {
                EXPECT_TRUE(address.startsWith("data:image/png;base64,"));
                continue;
            }
            EXPECT_FALSE(address.contains(QRegularExpression("^(/|[A-Za-z][A-Za-z0-9+.-]*:)"))) << "outside the manual";
            const QString target = targetOf(page, address);
            EXPECT_TRUE(address.section('#', 1).isEmpty() ||
                        valuesOf("id", contentsOf(target)).contains(address.section('#', 1)));
            if (target.endsWith(".png")) {
                reached << target;
            } else if (!reached.contains(target) && !open.contains(target)) {
                open << target;
            }
        }
    }
    // The tool tip of "Grid Spacing" in the generator's "Halcon" tab links to this page.
    EXPECT_TRUE(reached.contains("guides/calibration/patterns.html"));
    QDirIterator files(root.path(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = root.relativeFilePath(files.next());
        EXPECT_TRUE(reached.contains(file)) << qPrintable(file);
    }
}

}  // namespace

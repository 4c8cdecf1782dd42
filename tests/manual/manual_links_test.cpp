// Follows every link and picture of the built manual, starting at its first page, as a browser would.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>
#include <QtTest>

class ManualLinksTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyLinkLeadsSomewhere();
    void everyFileIsReached();
    void nothingIsLoadedFromElsewhere();
    void picturesAreSound();
    void idsAreUnique();

private:
    const QDir root{LMCALTAB_MANUAL};
    // Contents by path relative to the root.
    QMap<QString, QString> pages;
    QSet<QString> reached;
    QStringList broken;
};

namespace {

QString contentsOf(const QString &fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The values of an attribute, in order.
QStringList valuesOf(const QString &attribute, const QString &html) {
    QStringList values;
    auto match = QRegularExpression("\\s" + attribute + "=\"([^\"]*)\"").globalMatch(html);
    while (match.hasNext()) {
        values << match.next().captured(1);
    }
    return values;
}

bool isFromElsewhere(const QString &address) {
    return address.startsWith('/') || address.contains(QRegularExpression("^[A-Za-z][A-Za-z0-9+.-]*:"));
}

}  // namespace

void ManualLinksTest::initTestCase() {
    QStringList open{"index.html"};
    while (!open.isEmpty()) {
        const QString page = open.takeFirst();
        if (reached.contains(page)) {
            continue;
        }
        reached << page;
        const QString contents = contentsOf(root.filePath(page));
        QVERIFY2(!contents.isEmpty(), qPrintable(page));
        pages[page] = contents;
        for (const QString &address : valuesOf("href", contents) + valuesOf("src", contents)) {
            if (isFromElsewhere(address) || address.startsWith('#')) {
                continue;
            }
            const QString target = QDir::cleanPath(QFileInfo(page).path() + "/" + address.section('#', 0, 0));
            if (target.startsWith("..") || !QFileInfo(root.filePath(target)).isFile()) {
                broken << page + ": " + address;
            } else if (target.endsWith(".html")) {
                open << target;
            } else {
                reached << target;
            }
        }
    }
}

void ManualLinksTest::everyLinkLeadsSomewhere() {
    // The page that the tool tip links to.
    QVERIFY(pages.contains("guides/calibration/patterns.html"));
    QVERIFY(pages.size() >= 4);
    for (auto page = pages.begin(); page != pages.end(); ++page) {
        for (const QString &address : valuesOf("href", page.value())) {
            if (!address.contains('#')) {
                continue;
            }
            const QString file = address.section('#', 0, 0);
            const QString target =
                file.isEmpty() ? page.key() : QDir::cleanPath(QFileInfo(page.key()).path() + "/" + file);
            if (!valuesOf("id", pages[target]).contains(address.section('#', 1))) {
                broken << page.key() + ": " + address;
            }
        }
    }
    QCOMPARE(broken, QStringList());
}

void ManualLinksTest::everyFileIsReached() {
    QStringList lost;
    QDirIterator files(root.path(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = root.relativeFilePath(files.next());
        if (!reached.contains(file)) {
            lost << file;
        }
    }
    QCOMPARE(lost, QStringList());
}

void ManualLinksTest::nothingIsLoadedFromElsewhere() {
    for (const QString &file : reached) {
        const QString contents = contentsOf(root.filePath(file));
        if (file.endsWith(".html")) {
            for (const QString &address : valuesOf("href", contents) + valuesOf("src", contents)) {
                QVERIFY2(!isFromElsewhere(address), qPrintable(file + ": " + address));
            }
            QVERIFY2(!contents.contains("<script") && !contents.contains("<iframe"), qPrintable(file));
        } else if (file.endsWith(".css")) {
            QVERIFY2(!contents.contains("url(") && !contents.contains("@import"), qPrintable(file));
        } else if (file.endsWith(".svg")) {
            for (const QString &address : valuesOf("href", contents)) {
                QVERIFY2(address.startsWith("data:image/png;base64,"), qPrintable(file));
            }
        }
    }
}

void ManualLinksTest::picturesAreSound() {
    const QRegularExpression pictureElement("<img\\s[^>]*>");
    for (auto page = pages.begin(); page != pages.end(); ++page) {
        auto match = pictureElement.globalMatch(page.value());
        while (match.hasNext()) {
            const QString element = match.next().captured();
            const QString file = root.filePath(QFileInfo(page.key()).path() + "/" + valuesOf("src", element).value(0));
            QVERIFY2(!valuesOf("alt", element).value(0).isEmpty(), qPrintable(element));
            if (file.endsWith(".svg")) {
                QXmlStreamReader reader(contentsOf(file));
                bool holdsPicture = false;
                while (!reader.atEnd()) {
                    reader.readNext();
                    const QString address = reader.attributes().value("href").toString();
                    const QByteArray png = QByteArray::fromBase64(address.section(',', 1).toLatin1());
                    holdsPicture = holdsPicture || !QImage::fromData(png, "PNG").isNull();
                }
                QVERIFY2(!reader.hasError() && holdsPicture, qPrintable(file));
            } else {
                // The size that the page reserves for the picture.
                const QSize size(valuesOf("width", element).value(0).toInt(),
                                 valuesOf("height", element).value(0).toInt());
                QCOMPARE(QImage(file).size(), size);
            }
        }
    }
}

void ManualLinksTest::idsAreUnique() {
    for (auto page = pages.begin(); page != pages.end(); ++page) {
        QStringList ids = valuesOf("id", page.value());
        QVERIFY2(ids.removeDuplicates() == 0, qPrintable(page.key()));
    }
}

QTEST_GUILESS_MAIN(ManualLinksTest)
#include "manual_links_test.moc"

// Tests the window with the real library. Every page must show a picture and save a PDF and a pattern file. The pattern
// file is read back and must have the patterns of the page. Of the PDF, only the first bytes are checked.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/value_printing.h"

using driven_window::find;
using driven_window::setInput;

namespace {

void save(const MainWindow &window, const QString &fileName) {
    driven_window::answerFileDialog(fileName);
    find<QAbstractButton>(window, "saveBtn")->click();
}

TEST(WholeProgram, drawsAndSavesEveryPage) {
    const struct {
        int patternCount;
        double gridSpacing;
    } pages[] = {{1, 96.0}, {1, 12.0}, {1, 12.5}, {5, 12.0}, {1, 12.5}};
    const MainWindow window;
    for (int page = 0; page < 5; ++page) {
        SCOPED_TRACE(page);
        setInput(window, "patternType", page);
        ASSERT_NE(driven_window::picture(window), nullptr);
        EXPECT_EQ(driven_window::picture(window)->pixmap().size(), QSize(2000, 2000));

        const QTemporaryDir folder;
        save(window, folder.filePath("target"));
        save(window, folder.filePath("target.json"));
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                  (QStringList{"target.json", "target.pdf"}));
        QFile pdf(folder.filePath("target.pdf"));
        EXPECT_TRUE(pdf.open(QIODevice::ReadOnly) && pdf.readAll().startsWith("%PDF-"));
        QFile json(folder.filePath("target.json"));
        ASSERT_TRUE(json.open(QIODevice::ReadOnly));
        const QJsonArray patterns = QJsonDocument::fromJson(json.readAll()).object().value("Patterns").toArray();
        EXPECT_EQ(patterns.size(), pages[page].patternCount);
        for (int i = 0; i < patterns.size(); ++i) {
            const QJsonObject parameters = patterns[i].toObject().value("Parameters").toObject();
            EXPECT_EQ(parameters.value("GridSpacing").toDouble(), pages[page].gridSpacing);
            EXPECT_EQ(parameters.value("AssemblyPattern").toInt(-1), page == 3 ? i : -1);
        }
    }
}

}  // namespace

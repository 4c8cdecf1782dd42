#include "tooltips/manual_placeholder.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "tests/local_encoding.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

namespace {

class ManualPlaceholderTest : public testing::Test {
public:
    // QTemporaryDir cannot remove the folder, because the folder contains names that are invalid in the local encoding.
    ~ManualPlaceholderTest() override { std::filesystem::remove_all(directory.path().toStdString()); }

protected:
    // Makes a folder with this name and with an index page, and sets /Path/Manual in the library's tree to the folder.
    // Returns the text that then replaces the placeholder.
    std::string manualIn(const std::string &name) const {
        const std::string folder = directory.path().toStdString() + "/" + name;
        std::filesystem::create_directories(folder);
        std::ofstream(folder + "/index.html") << "manual";
        scripted_lmlib64::reset();
        lmLibSetString(nullptr, "/Path/Manual", folder.c_str());
        const Placeholder placeholder = makeManualPlaceholder();
        EXPECT_EQ(placeholder.first, "%MANUAL%");
        return placeholder.second;
    }

    const QTemporaryDir directory;
};

TEST_F(ManualPlaceholderTest, givesTheFolderInUtf8IfItHasAnIndexPage) {
    const LocalEncoding encoding;
    const std::string place = "file:///" + directory.path().toStdString() + "/";
    // Separators and blanks stay as they are.
    EXPECT_EQ(manualIn("a manual//of mine/"), place + "a manual//of mine/");
    EXPECT_EQ(manualIn("B\xC3\xBC"), place + "B\xC3\xBC");
    EXPECT_EQ(manualIn(encoding.euroByte), place + encoding.euro().toStdString())
        << "the folder is not converted from the local encoding to UTF-8";
}

TEST_F(ManualPlaceholderTest, fallsBackToTheOnlineManual) {
    const std::string withoutIndex = '"' + directory.path().toStdString() + '"';
    for (const std::string &node : {std::string("\"\""), withoutIndex, std::string("5")}) {
        scripted_lmlib64::setNode("/Path/Manual", node);
        EXPECT_EQ(makeManualPlaceholder(), Placeholder("%MANUAL%", "https://manual.vistrel.example")) << node;
    }
}

TEST_F(ManualPlaceholderTest, replacesEveryOccurrenceInTableOrder) {
    const std::pair<QString, QString> rows[] = {
        {"text", "text"},
        {"%MANUAL%/a and %MANUAL%/b", QString::fromUtf8("file:///ü/a and file:///ü/b")},
        {"%manual%", "%manual%"},
        {"%FIRST%", QString::fromUtf8("file:///ü")}};
    for (const auto &[text, expected] : rows) {
        setPlaceholderTable({{"%FIRST%", "%MANUAL%"}, {"%MANUAL%", "file:///\xC3\xBC"}});
        EXPECT_EQ(replacePlaceholders(text), expected);
        setPlaceholderTable({});
        EXPECT_EQ(replacePlaceholders(text), text);
    }
}

}  // namespace

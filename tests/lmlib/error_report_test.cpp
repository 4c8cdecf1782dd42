#include "lmlib/error_report.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <thread>
#include <vector>

#include "lmlib/lm_lib_exception.h"
#include "lmlib/message_box.h"
#include "tests/local_encoding.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

namespace {

using BoxAction = std::function<void(QMessageBox *)>;

void pressCopy(QMessageBox *box) {
    const auto buttons = box->buttons();
    const auto isCopy = [](const QAbstractButton *button) { return button->text() == " Copy to Clipboard "; };
    (*std::find_if(buttons.begin(), buttons.end(), isCopy))->click();
}

// Does some work that shows message boxes. Each action answers one of the boxes, in order. Fails if the number of boxes
// differs from the number of actions.
void runWithBoxes(const std::vector<BoxAction> &actions, const std::function<void()> &work) {
    std::size_t runCount = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            if (runCount < actions.size()) {
                actions[runCount](box);
            } else {
                box->reject();
            }
            ++runCount;
        }
    });
    timer.start(0);
    work();
    EXPECT_EQ(runCount, actions.size());
}

class ErrorReportTest : public testing::Test {
protected:
    ErrorReportTest() { scripted_lmlib64::reset(); }
};

TEST_F(ErrorReportTest, saysWhatFailed) {
    const QString item = "An LmLib error occurred when accessing the item:\n";
    const QString command = "An LmLib error occurred while executing the command:\n";
    const QString failed = R"({"Result":{"ErrorSymbol":"S","ErrorText":"a < b","Execute":{"Command":"C"}}})";
    const struct {
        const char *path;
        int code;
        QString slotJson, message, details;
    } rows[] = {
        {"/A", 3, "0", item + "/A: \n\tItemInexistent", "Unavailable"},
        {"/Execute", 13, R"({"x": 1})", item + "/Execute: \n\tItemTypeNotCompatible",
         "Current node value:\n{\n  \"x\": 1\n}"},
        {"/A", 29, "0", item + "/A: \n\t", "Unavailable"},
        {"", 7, "0", item + ": \n\tInternalError", "Unavailable"},
        {"/Execute", 17, "\"<b>\"", command, "Current node value:\n\"<b>\""},
        {"/Execute", 17, failed, command + "C: \nS: a < b", {}},
        {"/Execute", 17, R"({"Result":{"ErrorText":"T","Execute":{"Command":"C"}}})", command + "C: \n", {}},
        {"/A", 17, "0", command, "Unavailable"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.message.toStdString());
        scripted_lmlib64::reset();
        scripted_lmlib64::setNode("/Execute", row.slotJson.toStdString());
        const LmLibException exception(row.path, row.code, nullptr);
        const auto look = [&](QMessageBox *box) {
            EXPECT_EQ(box->text(), row.message);
            EXPECT_EQ(box->textFormat(), Qt::PlainText);
            EXPECT_TRUE(row.details.isNull() || box->detailedText() == row.details) << qPrintable(box->detailedText());
            EXPECT_EQ(box->icon(), QMessageBox::Critical);
            EXPECT_EQ(box->parent(), nullptr);
            EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::Ok));
            EXPECT_EQ(box->escapeButton(), box->button(QMessageBox::Ok));
            box->button(QMessageBox::Ok)->click();
        };
        runWithBoxes({look}, [&] { showErrorReport(exception); });
        // The node is read once, pretty-printed, in full precision and never in scientific notation. If the path is
        // empty, nothing is read, because the node would be the library's whole tree.
        const std::string read = std::string("lmLibGetJson ") + row.path + " true 18 false";
        const auto lines = scripted_lmlib64::callLines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), read), *row.path == '\0' ? 0 : 1);
    }
}

TEST_F(ErrorReportTest, copiesTheWholeTextAndStaysOpen) {
    const LocalEncoding encoding;
    const QString shown = encoding.euro() + "\nline";
    const auto copyAgain = [&](QMessageBox *box) {
        EXPECT_EQ(box->text(), shown);
        EXPECT_EQ(QApplication::clipboard()->text(), shown + "\ndetails " + encoding.euro());
        QApplication::clipboard()->setText("other");
        pressCopy(box);
    };
    const auto escape = [&](QMessageBox *box) {
        EXPECT_NE(QApplication::clipboard()->text(), "other");
        QTest::keyClick(box, Qt::Key_Escape);
    };
    runWithBoxes({pressCopy, copyAgain, escape}, [&] {
        EXPECT_EQ(showMessageBox("\xA4\nline", QMessageBox::Warning, "details \xA4"), QMessageBox::Ok);
    });
}

TEST_F(ErrorReportTest, offersTheButtonsItIsGiven) {
    const auto no = [](QMessageBox *box) {
        EXPECT_EQ(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        EXPECT_EQ(box->buttons().size(), 3);  // the third one copies the text
        EXPECT_EQ(box->icon(), QMessageBox::Question);
        box->button(QMessageBox::No)->click();
    };
    runWithBoxes({no}, [&] {
        EXPECT_EQ(showMessageBox("Sure?", QMessageBox::Question, "", {QMessageBox::Yes, QMessageBox::No}),
                  QMessageBox::No);
    });
}

TEST_F(ErrorReportTest, rethrowsOnEveryThreadButTheGuiThread) {
    std::thread([] {
        try {
            try {
                throw LmLibException("/A", LmLibResultTimeout, nullptr);
            } catch (const LmLibException &exception) {
                showErrorReport(exception);
            }
            ADD_FAILURE() << "not thrown again";
        } catch (const LmLibException &exception) {
            EXPECT_EQ(exception.errorCode, LmLibResultTimeout);
        }
    }).join();
    EXPECT_EQ(scripted_lmlib64::callLines().size(), 1U);  // the exception's line in the debug log
}

}  // namespace

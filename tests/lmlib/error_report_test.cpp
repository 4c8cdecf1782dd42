#include "lmlib/error_report.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>
#include <thread>
#include <vector>

#include "lmlib/lm_lib_exception.h"
#include "lmlib/message_box.h"
#include "lmlib/tree_command.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"

namespace {

using BoxAction = std::function<void(QMessageBox *)>;

void pressCopy(QMessageBox *box) {
    for (QAbstractButton *button : box->buttons()) {
        if (button->text() == " Copy to Clipboard ") {
            button->click();
            return;
        }
    }
    ADD_FAILURE() << "no button to copy with";
    box->reject();
}

// Does some work that shows message boxes, and answers each showing of a box with the next action. Fails if there are
// more or fewer showings than actions.
void runWithBoxes(const std::vector<BoxAction> &actions, const std::function<void()> &work) {
    std::size_t runCount = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box == nullptr) {
            return;
        }
        if (runCount < actions.size()) {
            actions[runCount](box);
        } else {
            box->button(QMessageBox::Ok)->click();
        }
        ++runCount;
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
    const QString slot = "/Execute/s";
    const QString item = "An LmLib error occurred when accessing the item:\n";
    const QString command = "An LmLib error occurred while executing the command:\n";
    const QString unavailable = "Unavailable";
    const QString value = "Current node value:\n";
    const struct {
        const char *slotJson;
        QString path;
        int code;
        QString message, details;  // null details: any
    } rows[] = {
        {"", "/A", 3, item + "/A: \n\tItemInexistent", unavailable},
        {"{\"x\": 1}", slot, 13, item + slot + ": \n\tItemTypeNotCompatible", value + "{\n  \"x\": 1\n}"},
        {"", "/A", 29, item + "/A: \n\t", unavailable},
        {"", "", 7, item + ": \n\tInternalError", unavailable},
        {"\"<b>\"", slot, 17, command, value + "\"<b>\""},
        {R"({"Result":{"ErrorSymbol":"S","ErrorText":"a < b","Execute":{"Command":"C"}}})",
         slot,
         17,
         command + "C: \nS: a < b",
         {}},
        {R"({"Result":{"ErrorSymbol":"S","Execute":{"Command":"C"}}})", slot, 17, command + "C: \nS: ", {}},
        {R"({"Result":{"ErrorText":"T","Execute":{"Command":"C"}}})", slot, 17, command + "C: \n", {}},
        {R"({"Result":{"ErrorSymbol":"S","ErrorText":"T"}})", slot, 17, command, {}},
        {"", slot, 17, command, unavailable},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.message.toStdString());
        scripted_lmlib64::reset();
        if (*row.slotJson != '\0') {
            scripted_lmlib64::setNode("/Execute/s", row.slotJson);
        }
        const LmLibException exception(row.path.toStdString(), row.code, nullptr);
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
        // empty, the library's whole tree is not read.
        const std::string read = "lmLibGetJson " + row.path.toStdString() + " true 18 false";
        const auto lines = scripted_lmlib64::callLines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), read), row.path.isEmpty() ? 0 : 1);
    }
}

TEST_F(ErrorReportTest, keepsTheSlotUntilTheHandlerIsDone) {
    scripted_lmlib64::setCommand("Measure", {scripted_lmlib64::CommandScript::failing("TooDark", "Too dark.")});
    bool isThere = false;
    const auto look = [&](QMessageBox *box) {
        isThere = scripted_lmlib64::hasNode("/Execute/1/Result/ErrorSymbol");
        EXPECT_TRUE(box->detailedText().contains("TooDark"));
        box->button(QMessageBox::Ok)->click();
    };
    runWithBoxes({look}, [] {
        try {
            TreeCommand("Measure").execute(true);
        } catch (const LmLibException &exception) {
            showErrorReport(exception);
        }
    });
    EXPECT_TRUE(isThere);
    EXPECT_FALSE(scripted_lmlib64::hasNode("/Execute/1"));
}

TEST_F(ErrorReportTest, copiesAndStaysOpen) {
    QApplication::clipboard()->clear();
    const auto copied = [](QMessageBox *box) {
        EXPECT_EQ(QApplication::clipboard()->text(), "message\nline\ndetails");
        QApplication::clipboard()->setText("other");
        pressCopy(box);
    };
    const auto escape = [](QMessageBox *box) {
        EXPECT_EQ(QApplication::clipboard()->text(), "message\nline\ndetails");
        QTest::keyClick(box, Qt::Key_Escape);
    };
    runWithBoxes({pressCopy, copied, escape},
                 [&] { EXPECT_EQ(showMessageBox("message\nline", QMessageBox::Warning, "details"), QMessageBox::Ok); });
}

TEST_F(ErrorReportTest, offersTheButtonsItIsGiven) {
    const auto no = [](QMessageBox *box) {
        EXPECT_EQ(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        EXPECT_EQ(box->buttons().size(), 3);
        EXPECT_EQ(box->icon(), QMessageBox::Question);
        box->button(QMessageBox::No)->click();
    };
    runWithBoxes({no}, [&] {
        EXPECT_EQ(showMessageBox("Sure?", QMessageBox::Question, "", {QMessageBox::Yes, QMessageBox::No}),
                  QMessageBox::No);
    });
}

TEST_F(ErrorReportTest, rethrowsOnAnyOtherThread) {
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
    EXPECT_EQ(scripted_lmlib64::calls().size(), 1U);
}

}  // namespace

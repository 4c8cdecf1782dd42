#include "lmlib/error_report.h"

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
#include "lmlib/tree_item.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using BoxAction = std::function<void(QMessageBox *)>;

QAbstractButton *buttonWithText(const QMessageBox *box, const QString &text) {
    for (QAbstractButton *button : box->buttons()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

void pressCopy(QMessageBox *box) {
    buttonWithText(box, QStringLiteral(" Copy to Clipboard "))->click();
}

void pressOk(QMessageBox *box) {
    box->button(QMessageBox::Ok)->click();
}

// Runs something that shows boxes, and meets each run of a box with the next action. Fails where the number of
// runs is another than that of the actions.
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
    QCOMPARE(runCount, actions.size());
}

}  // namespace

class ErrorReportTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        scripted_lmlib64::reset();
        QApplication::clipboard()->clear();
    }

    void saysWhatFailed_data() {
        QTest::addColumn<QString>("slotJson");
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("details");

        const QString slot = QStringLiteral("/Execute/s");
        const QString item = QStringLiteral("An LmLib error occurred when accessing the item:\n");
        const QString command = QStringLiteral("An LmLib error occurred while executing the command:\n");
        const QString unavailable = QStringLiteral("Unavailable");
        const QString value = QStringLiteral("Current node value:\n");

        QTest::newRow("absent item") << ""
                                     << "/A" << 3 << item + "/A: \n\tItemInexistent" << unavailable;
        QTest::newRow("item that is there")
            << "{\"x\": 1}" << slot << 13 << item + slot + ": \n\tItemTypeNotCompatible" << value + "{\n  \"x\": 1\n}";
        QTest::newRow("unknown code") << ""
                                      << "/A" << 29 << item + "/A: \n\t" << unavailable;
        QTest::newRow("the whole library") << ""
                                           << "" << 7 << item + ": \n\tInternalError" << unavailable;
        QTest::newRow("markup is text") << "\"<b>\"" << slot << 17 << command << value + "\"<b>\"";
        QTest::newRow("command") << R"({"Result":{"ErrorSymbol":"S","ErrorText":"a < b","Execute":{"Command":"C"}}})"
                                 << slot << 17 << command + "C: \nS: a < b" << QString();
        QTest::newRow("command without a text") << R"({"Result":{"ErrorSymbol":"S","Execute":{"Command":"C"}}})" << slot
                                                << 17 << command + "C: \nS: " << QString();
        QTest::newRow("command without a symbol")
            << R"({"Result":{"ErrorText":"T","Execute":{"Command":"C"}}})" << slot << 17 << command + "C: \n"
            << QString();
        QTest::newRow("command without a name")
            << R"({"Result":{"ErrorSymbol":"S","ErrorText":"T"}})" << slot << 17 << command << QString();
        QTest::newRow("command without a slot") << "" << slot << 17 << command << unavailable;
    }

    void saysWhatFailed() {
        QFETCH(QString, slotJson);
        QFETCH(QString, path);
        QFETCH(int, code);
        QFETCH(QString, message);
        QFETCH(QString, details);
        if (!slotJson.isEmpty()) {
            scripted_lmlib64::setNode("/Execute/s", slotJson.toStdString());
        }
        const LmLibException exception(path.toStdString(), code, nullptr);
        const auto look = [&](QMessageBox *box) {
            QCOMPARE(box->text(), message);
            QCOMPARE(box->textFormat(), Qt::PlainText);
            if (!details.isNull()) {
                QCOMPARE(box->detailedText(), details);
            }
            QCOMPARE(box->icon(), QMessageBox::Critical);
            QCOMPARE(box->parent(), nullptr);
            QVERIFY(box->defaultButton() == box->button(QMessageBox::Ok));
            QVERIFY(box->escapeButton() == box->button(QMessageBox::Ok));
            pressOk(box);
        };
        runWithBoxes({look}, [&] { showErrorReport(exception); });
    }

    void asksForPrettyJsonInFullPrecision() {
        scripted_lmlib64::setNode("/A", "1");
        runWithBoxes({pressOk}, [] { showErrorReport(LmLibException("/A", 7, nullptr)); });
        QCOMPARE(scripted_lmlib64::callLines().back(), std::string("lmLibGetJson /A true 18 false"));
    }

    void keepsTheSlotUntilTheHandlerIsDone() {
        scripted_lmlib64::setCommand("Measure", {scripted_lmlib64::CommandScript::failing("TooDark", "Too dark.")});
        bool isThere = false;
        const auto look = [&](QMessageBox *box) {
            isThere = scripted_lmlib64::hasNode("/Execute/1/Result/ErrorSymbol");
            QVERIFY(box->detailedText().contains(QStringLiteral("TooDark")));
            pressOk(box);
        };
        runWithBoxes({look}, [] {
            try {
                TreeCommand("Measure").execute(true);
            } catch (const LmLibException &exception) {
                showErrorReport(exception);
            }
        });
        QVERIFY(isThere);
        QVERIFY(!scripted_lmlib64::hasNode("/Execute/1"));
    }

    void copiesAndStaysOpen() {
        const auto copied = [](QMessageBox *box) {
            QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("message\nline\ndetails"));
            QApplication::clipboard()->setText(QStringLiteral("other"));
            pressCopy(box);
        };
        const auto escape = [](QMessageBox *box) {
            QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("message\nline\ndetails"));
            QTest::keyClick(box, Qt::Key_Escape);
        };
        int result = 0;
        runWithBoxes({pressCopy, copied, escape},
                     [&] { result = showMessageBox("message\nline", QMessageBox::Warning, "details"); });
        QCOMPARE(result, static_cast<int>(QMessageBox::Ok));
    }

    void offersTheButtonsItIsGiven() {
        const auto no = [](QMessageBox *box) {
            QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
            QCOMPARE(box->icon(), QMessageBox::Question);
            QVERIFY(buttonWithText(box, QStringLiteral(" Copy to Clipboard ")) != nullptr);
            box->button(QMessageBox::No)->click();
        };
        int result = 0;
        runWithBoxes({no}, [&] {
            result = showMessageBox("Sure?", QMessageBox::Question, "", {QMessageBox::Yes, QMessageBox::No});
        });
        QCOMPARE(result, static_cast<int>(QMessageBox::No));
    }

    void rethrowsOnAnyOtherThread() {
        std::int32_t caughtCode = 0;
        std::thread([&] {
            try {
                try {
                    throw LmLibException("/A", LmLibResultTimeout, nullptr);
                } catch (const LmLibException &exception) {
                    showErrorReport(exception);
                }
            } catch (const LmLibException &exception) {
                caughtCode = exception.errorCode;
            }
        }).join();
        QCOMPARE(caughtCode, static_cast<std::int32_t>(LmLibResultTimeout));
        QCOMPARE(scripted_lmlib64::calls().size(), std::size_t(1));
    }
};

QTEST_MAIN(ErrorReportTest)
#include "error_report_test.moc"

// Tests that many random changes of the inputs, on all pages, leak no memory, open files, threads or nodes of the
// library's tree. Also tests that the program can be started and ended many times.
#include <malloc.h>
#include <unistd.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QProcess>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>
#include <algorithm>
#include <random>

#include "generator/main_window.h"
#include "lmlib/tree_item.h"

namespace {

struct Held {
    qint64 bytes = 0;
    int openFiles = 0;
    int threads = 0;
    int nodes = 0;  // below /Execute
};

int entryCount(const QString &folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

Held heldNow() {
    // Freed memory is first returned to the system. Otherwise, a varying part of it would count as held.
    malloc_trim(0);
    QFile memory("/proc/self/statm");
    memory.open(QIODevice::ReadOnly);
    const qint64 pages = memory.readAll().split(' ').value(1).toLongLong();
    return {pages * sysconf(_SC_PAGESIZE), entryCount("/proc/self/fd"), entryCount("/proc/self/task"),
            TreeItem()["Execute"].count()};
}

int wanted(const char *variable, int otherwise) {
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : otherwise;
}

// Sets a random input of the current page to a random value that the input allows, or goes to a random page.
class RandomChanges {
public:
    explicit RandomChanges(const MainWindow &window)
        : pages(window.findChild<QTabWidget *>("patternType")), random(2026) {}

    void change() {
        if (below(8) == 0) {
            pages->setCurrentIndex(below(pages->count()));
            return;
        }
        const auto inputs = pages->currentWidget()->findChildren<QWidget *>();
        for (int attempt = 0; attempt < 20; ++attempt) {
            if (changeInput(inputs[below(inputs.size())])) {
                return;
            }
        }
    }

private:
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    double share() { return below(10001) / 10000.0; }

    bool changeInput(QWidget *input) {
        if (!input->isEnabled()) {
            return false;
        }
        if (auto *list = qobject_cast<QComboBox *>(input)) {
            list->setCurrentIndex(below(list->count()));
        } else if (auto *count = qobject_cast<QSpinBox *>(input)) {
            count->setValue(count->minimum() + below(count->maximum() - count->minimum() + 1));
        } else if (auto *size = qobject_cast<QDoubleSpinBox *>(input)) {
            size->setValue(size->minimum() + share() * (size->maximum() - size->minimum()));
        } else if (auto *choice = qobject_cast<QRadioButton *>(input)) {
            choice->click();
        } else if (auto *option = qobject_cast<QCheckBox *>(input)) {
            option->click();
        } else {
            return false;
        }
        return true;
    }

    QTabWidget *pages;
    std::mt19937 random;
};

}  // namespace

class LongUseTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules("default.warning=false"); }
    void updatesLeaveNothingBehind();
    void startsAndEndsAgainAndAgain();
};

void LongUseTest::updatesLeaveNothingBehind() {
    const int updates = wanted("LMCALTAB_UPDATES", 2000);
    const int warmUp = std::min(1000, updates / 2);
    MainWindow window;
    window.show();
    int pictures = 0;
    connect(window.findChild<QGraphicsView *>("preview")->scene(), &QGraphicsScene::changed, [&] { ++pictures; });
    // The form allows some values that no pattern can have. The program reports these in a message box, which is closed
    // here. Such a change is counted as an update too.
    int boxes = 0;
    QTimer user;
    connect(&user, &QTimer::timeout, [&boxes] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            ++boxes;
            box->accept();
        }
    });
    user.start(0);

    RandomChanges changes(window);
    Held first;
    Held last;
    for (int update = 1; update <= updates; ++update) {
        changes.change();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (update == warmUp) {
            first = heldNow();
        }
    }
    last = heldNow();
    const double grownMiB = static_cast<double>(last.bytes - first.bytes) / (1024.0 * 1024.0);
    qInfo("%d updates with %d reports; after the first %d, memory grew by %.2f MiB", updates, boxes, warmUp, grownMiB);
    QVERIFY(pictures > updates / 4);
    // There may be fewer threads than at first, because some of the toolkit's threads may have ended.
    QVERIFY2(last.openFiles <= first.openFiles, qPrintable(QString::number(first.openFiles)));
    QVERIFY2(last.threads <= first.threads, qPrintable(QString::number(first.threads)));
    QCOMPARE(last.nodes, 0);
#if defined(MEMORY_IS_MEASURED)
    QVERIFY2(grownMiB < 1.0, qPrintable(QString("memory grew by %1 MiB").arg(grownMiB)));
#endif
}

void LongUseTest::startsAndEndsAgainAndAgain() {
    const int starts = wanted("LMCALTAB_STARTS", 20);
    for (int start = 1; start <= starts; ++start) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(CLOSING_PROGRAM, QStringList());
        QVERIFY2(program.waitForFinished(60000), qPrintable(QString("start %1 does not end").arg(start)));
        QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0,
                 qPrintable(QString("start %1: %2").arg(start).arg(QString(program.readAll()))));
    }
    qInfo("%d starts", starts);
}

QTEST_MAIN(LongUseTest)
#include "long_use_test.moc"

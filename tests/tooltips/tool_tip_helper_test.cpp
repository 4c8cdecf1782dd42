#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>
#include <QtTest>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tooltips/custom_tip_label.h"
#include "tooltips/custom_tool_tip.h"
#include "tooltips/manual_placeholder.h"
#include "tooltips/tool_tip_helper.h"

class ToolTipHelperTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fillsThePlaceholderTable();
    void showsTheCustomTipOnly();
    void emptyTipClosesOnlyOverAChild_data();
    void emptyTipClosesOnlyOverAChild();
    void takesToolTipEventsWhenNotEnabled();
    void pressesCloseTheTipAndGoOn_data();
    void pressesCloseTheTipAndGoOn();
    void hoverShowsTheTipOfARegisteredObject();
    void leavingStopsTheHover();
    void onlyTheFirstPendingTipIsShown();
    void registeredTextStandsInForTheObjects();
    void forgetsDestroyedObjects();

private:
    static bool sendToolTip(QObject *object, const QPoint &global = QPoint(200, 200));
    static void send(QObject *object, QEvent::Type type);

    QScopedPointer<VistrelToolTipHelper> helper;
    QScopedPointer<QWidget> window;
    QPushButton *button = nullptr;
    QWidget *plain = nullptr;
};

void ToolTipHelperTest::init() {
    scripted_lmlib64::reset();
    helper.reset(new VistrelToolTipHelper);
    qApp->installEventFilter(helper.data());
    window.reset(new QWidget);
    window->setGeometry(50, 50, 300, 200);
    button = new QPushButton(window.data());
    button->setToolTip("see %MANUAL%");
    plain = new QWidget(window.data());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.data()));
}

void ToolTipHelperTest::cleanup() {
    delete QCustomTipLabel::instance;
    window.reset();
    helper.reset();
}

// True when the event was taken before its object saw it.
bool ToolTipHelperTest::sendToolTip(QObject *object, const QPoint &global) {
    class Witness : public QObject {
    public:
        bool eventFilter(QObject * /*object*/, QEvent *event) override {
            seen = seen || event->type() == QEvent::ToolTip;
            return false;
        }
        bool seen = false;
    } witness;
    object->installEventFilter(&witness);
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), global);
    QCoreApplication::sendEvent(object, &event);
    return !witness.seen;
}

void ToolTipHelperTest::send(QObject *object, QEvent::Type type) {
    if (type == QEvent::MouseMove) {
        QMouseEvent move(type, QPointF(1, 1), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(object, &move);
        return;
    }
    QEvent event(type);
    QCoreApplication::sendEvent(object, &event);
}

void ToolTipHelperTest::fillsThePlaceholderTable() {
    QCOMPARE(replacePlaceholders("%MANUAL%"), "https://manual.vistrel.example");
    QCOMPARE(scripted_lmlib64::callLines(), std::vector<std::string>{"lmLibGetString /Path/Manual [no result]"});
}

void ToolTipHelperTest::showsTheCustomTipOnly() {
    QVERIFY(sendToolTip(button));
    QVERIFY(QCustomToolTip::isVisible());
    QCOMPARE(QCustomToolTip::text(), "see https://manual.vistrel.example");
    QCOMPARE(QCustomTipLabel::instance->pos(), QPoint(202, 216));
    QCOMPARE(QCustomTipLabel::instance->parentWidget(), button);
    for (const QWidget *top : QApplication::topLevelWidgets()) {
        QVERIFY(!top->inherits("QTipLabel"));
    }
}

void ToolTipHelperTest::emptyTipClosesOnlyOverAChild_data() {
    QTest::addColumn<QString>("over");
    QTest::addColumn<int>("hideInterval");
    QTest::newRow("child") << "child" << 200;
    QTest::newRow("window") << "window" << 0;
    QTest::newRow("tip") << "tip" << 0;
    QTest::newRow("object that is no widget") << "object" << 200;
    QTest::newRow("parentless object that is no widget") << "parentless object" << 0;
}

void ToolTipHelperTest::emptyTipClosesOnlyOverAChild() {
    QFETCH(QString, over);
    QFETCH(int, hideInterval);
    sendToolTip(button);
    QCustomTipLabel *label = QCustomTipLabel::instance;
    // A tip has a parent, so only being the tip protects it.
    QVERIFY(label->parent() != nullptr);
    QObject parentless;
    QObject owned(&parentless);
    const QMap<QString, QObject *> objects{{"child", plain},
                                           {"window", window.data()},
                                           {"tip", label},
                                           {"object", &owned},
                                           {"parentless object", &parentless}};
    QVERIFY(sendToolTip(objects.value(over)));
    QVERIFY(QCustomToolTip::isVisible());
    QCOMPARE(label->hideInterval, hideInterval);
}

void ToolTipHelperTest::takesToolTipEventsWhenNotEnabled() {
    helper->setEnabled(false);
    QVERIFY(sendToolTip(button));
    QVERIFY(QCustomTipLabel::instance == nullptr);
    helper->registerObject(plain, "registered");
    send(plain, QEvent::Enter);
    helper->showTimerElapsed();
    QVERIFY(QCustomTipLabel::instance == nullptr);
    QVERIFY(!helper->entries[0].pending);
}

void ToolTipHelperTest::pressesCloseTheTipAndGoOn_data() {
    QTest::addColumn<bool>("key");
    QTest::newRow("key") << true;
    QTest::newRow("mouse button") << false;
}

void ToolTipHelperTest::pressesCloseTheTipAndGoOn() {
    QFETCH(bool, key);
    sendToolTip(button);
    const QSignalSpy clicked(button, &QPushButton::clicked);
    // The release that belongs to the press does not put the close off.
    if (key) {
        QTest::keyClick(button, Qt::Key_Space);
    } else {
        QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(QCustomTipLabel::instance->hideInterval, 200);
    QVERIFY(QCustomToolTip::isVisible());
}

void ToolTipHelperTest::hoverShowsTheTipOfARegisteredObject() {
    QObject hovered;
    helper->registerObject(&hovered, "registered %MANUAL%");
    QVERIFY(!helper->showTimer.isActive());
    send(&hovered, QEvent::Enter);
    QVERIFY(helper->showTimer.isActive());
    QVERIFY(helper->showTimer.isSingleShot());
    QCOMPARE(helper->showTimer.interval(), 1000);
    QVERIFY(helper->entries[0].pending);

    // A delay that is begun again shows as another interval.
    helper->showTimer.setInterval(5000);
    send(plain, QEvent::MouseMove);
    QCOMPARE(helper->showTimer.interval(), 5000);
    send(&hovered, QEvent::MouseMove);
    QCOMPARE(helper->showTimer.interval(), 1000);
    QVERIFY(helper->showTimer.isActive());

    QCursor::setPos(300, 310);
    QTimerEvent elapsed(helper->showTimer.timerId());
    QCoreApplication::sendEvent(&helper->showTimer, &elapsed);
    QVERIFY(!helper->showTimer.isActive());
    QVERIFY(!helper->entries[0].pending);
    QCOMPARE(QCustomToolTip::text(), "registered https://manual.vistrel.example");
    QCOMPARE(QCustomTipLabel::instance->pos(), QPoint(302, 326));
    QVERIFY(QCustomTipLabel::instance->parentWidget() == nullptr);
}

void ToolTipHelperTest::leavingStopsTheHover() {
    helper->registerObject(plain, "registered");
    send(plain, QEvent::Enter);
    send(plain, QEvent::Leave);
    QVERIFY(!helper->showTimer.isActive());
    QVERIFY(!helper->entries[0].pending);
    helper->showTimerElapsed();
    QVERIFY(!QCustomToolTip::isVisible());
}

void ToolTipHelperTest::onlyTheFirstPendingTipIsShown() {
    QObject first;
    QObject second;
    QObject third;
    helper->registerObject(&first, "first");
    helper->registerObject(&second, "second");
    helper->registerObject(&third, "third");
    send(&third, QEvent::Enter);
    send(&second, QEvent::Enter);
    helper->showTimerElapsed();
    QCOMPARE(QCustomToolTip::text(), "second");
    QVERIFY(helper->entries[2].pending);
}

void ToolTipHelperTest::registeredTextStandsInForTheObjects() {
    helper->registerObject(button, "first");
    helper->registerObject(button, "second");
    QVERIFY(sendToolTip(button));
    QCOMPARE(QCustomToolTip::text(), "first");
}

void ToolTipHelperTest::forgetsDestroyedObjects() {
    QObject stays;
    auto *goes = new QObject;
    helper->registerObject(goes, "goes");
    helper->registerObject(&stays, "stays");
    helper->registerObject(goes, "goes, too");
    send(goes, QEvent::Enter);
    delete goes;
    QCOMPARE(helper->entries.size(), std::size_t(1));
    QCOMPARE(helper->entries[0].object, &stays);
    helper->showTimerElapsed();
    QVERIFY(!QCustomToolTip::isVisible());
}

QTEST_MAIN(ToolTipHelperTest)
#include "tool_tip_helper_test.moc"

#include "tooltips/tool_tip_helper.h"

#include <gtest/gtest.h>

#include <QHelpEvent>
#include <QPushButton>
#include <QtTest>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tests/value_printing.h"
#include "tooltips/custom_tip_label.h"
#include "tooltips/custom_tool_tip.h"

class ToolTipHelperTest : public testing::Test {
public:
    ~ToolTipHelperTest() override { delete QCustomTipLabel::instance; }

protected:
    ToolTipHelperTest() {
        scripted_lmlib64::reset();
        helper = std::make_unique<VistrelToolTipHelper>();
        qApp->installEventFilter(helper.get());
        window.setGeometry(50, 50, 300, 200);
        button->setToolTip("see %MANUAL%");
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    // Sends a tool-tip event for the object to the helper. True if the helper consumes the event.
    bool sendToolTip(QObject *object) {
        QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), QPoint(200, 200));
        return helper->eventFilter(object, &event);
    }

    static void send(QObject *object, QEvent::Type type) {
        QMouseEvent move(QEvent::MouseMove, QPointF(1, 1), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QEvent other(type);
        QCoreApplication::sendEvent(object, type == QEvent::MouseMove ? &move : &other);
    }

    static int hideInterval() { return QCustomTipLabel::instance->hideInterval; }
    QTimer &showTimer() { return helper->showTimer; }
    void elapse() { helper->showTimerElapsed(); }

    std::unique_ptr<VistrelToolTipHelper> helper;
    QWidget window;
    QPushButton *button = new QPushButton(&window);
    QWidget *plain = new QWidget(&window);
};

TEST_F(ToolTipHelperTest, readsTheManualsPathAndPutsItsAddressIntoTheTip) {
    EXPECT_EQ(scripted_lmlib64::callLines(), std::vector<std::string>{"lmLibGetString /Path/Manual [no result]"});
    EXPECT_TRUE(sendToolTip(button));
    EXPECT_TRUE(QCustomToolTip::isVisible());
    EXPECT_EQ(QCustomToolTip::text(), "see https://manual.vistrel.example");
    EXPECT_EQ(QCustomTipLabel::instance->pos(), QPoint(202, 216));
    EXPECT_EQ(QCustomTipLabel::instance->parentWidget(), button);
}

TEST_F(ToolTipHelperTest, eventForAnObjectWithoutATipClosesTheTipOnlyIfTheObjectHasAParent) {
    QObject parentless;
    QObject owned(&parentless);
    const auto tip = [] { return QCustomTipLabel::instance; };
    // In each row: an object without a tip of its own, and after how many milliseconds an event for it closes the
    // visible tip (0: never). The label that shows the tip has a parent, too. But an event for the label does not close
    // the tip, because the helper recognises the label.
    const std::vector<std::pair<std::function<QObject *()>, int>> rows = {
        {[&] { return plain; }, 200},  {[&] { return &window; }, 0},     {tip, 0},
        {[&] { return &owned; }, 200}, {[&] { return &parentless; }, 0},
    };
    for (const auto &[object, interval] : rows) {
        delete QCustomTipLabel::instance;
        sendToolTip(button);
        EXPECT_NE(tip()->parent(), nullptr);
        EXPECT_TRUE(sendToolTip(object()));
        EXPECT_TRUE(QCustomToolTip::isVisible());
        EXPECT_EQ(hideInterval(), interval) << "row " << &object - &rows[0].first;
    }
}

TEST_F(ToolTipHelperTest, firstRegisteredTextReplacesTheObjectsOwnTip) {
    helper->registerObject(button, "first");
    helper->registerObject(button, "second");
    EXPECT_TRUE(sendToolTip(button));
    EXPECT_EQ(QCustomToolTip::text(), "first");
}

TEST_F(ToolTipHelperTest, consumesToolTipEventsButShowsNoTipsWhileItIsDisabled) {
    helper->setEnabled(false);
    EXPECT_TRUE(sendToolTip(button));
    helper->registerObject(plain, "registered");
    send(plain, QEvent::Enter);
    elapse();
    EXPECT_EQ(QCustomTipLabel::instance, nullptr);
}

TEST_F(ToolTipHelperTest, pressesCloseTheTipAndStillReachTheWidget) {
    for (const bool isKey : {true, false}) {
        delete QCustomTipLabel::instance;
        sendToolTip(button);
        const QSignalSpy clicked(button, &QPushButton::clicked);
        // The release that follows the press does not delay the pending close.
        if (isKey) {
            QTest::keyClick(button, Qt::Key_Space);
        } else {
            QTest::mouseClick(button, Qt::LeftButton);
        }
        EXPECT_EQ(clicked.count(), 1);
        EXPECT_EQ(hideInterval(), 200);
        EXPECT_TRUE(QCustomToolTip::isVisible());
    }
}

TEST_F(ToolTipHelperTest, hoverShowsTheTipOfARegisteredObjectOnce) {
    QObject hovered;
    helper->registerObject(&hovered, "registered %MANUAL%");
    EXPECT_FALSE(showTimer().isActive());
    send(&hovered, QEvent::Enter);
    EXPECT_TRUE(showTimer().isActive() && showTimer().isSingleShot());
    EXPECT_EQ(showTimer().interval(), 1000);

    // If the delay restarts, the timer's interval is no longer 5000 ms.
    showTimer().setInterval(5000);
    send(plain, QEvent::MouseMove);
    EXPECT_EQ(showTimer().interval(), 5000);
    send(&hovered, QEvent::MouseMove);
    EXPECT_EQ(showTimer().interval(), 1000);

    QCursor::setPos(300, 310);
    QTimerEvent elapsed(showTimer().timerId());
    QCoreApplication::sendEvent(&showTimer(), &elapsed);
    EXPECT_FALSE(showTimer().isActive());
    EXPECT_EQ(QCustomToolTip::text(), "registered https://manual.vistrel.example");
    EXPECT_EQ(QCustomTipLabel::instance->pos(), QPoint(302, 326));
    EXPECT_EQ(QCustomTipLabel::instance->parentWidget(), nullptr);
    delete QCustomTipLabel::instance;
    elapse();
    EXPECT_FALSE(QCustomToolTip::isVisible());
}

TEST_F(ToolTipHelperTest, showsTheFirstPendingTipWhoseObjectIsStillHovered) {
    QObject left;
    auto *destroyed = new QObject;
    QObject second;
    QObject third;
    helper->registerObject(&left, "left");
    helper->registerObject(destroyed, "destroyed");
    helper->registerObject(&second, "second");
    helper->registerObject(&third, "third");
    helper->registerObject(destroyed, "destroyed, too");
    for (QObject *object : {&third, &second, destroyed, &left}) {
        send(object, QEvent::Enter);
    }
    send(&left, QEvent::Leave);
    EXPECT_FALSE(showTimer().isActive());
    delete destroyed;
    for (const char *text : {"second", "third", "third"}) {
        elapse();
        EXPECT_EQ(QCustomToolTip::text(), text);
    }
}

#include "tooltips/custom_tool_tip.h"

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDesktopServices>
#include <QMouseEvent>
#include <QScreen>
#include <QTimerEvent>
#include <QtTest>

#include "tests/value_printing.h"
#include "tooltips/custom_tip_label.h"
#include "tooltips/manual_placeholder.h"

// Stands in for the browser.
class Browser : public QObject {
    Q_OBJECT

public:
    QUrl opened;

public slots:
    void openUrl(const QUrl &url) { opened = url; }
};

// The tests read the intervals of the timers, and send timer events instead of waiting.
class CustomToolTipTest : public testing::Test {
public:
    ~CustomToolTipTest() override { delete QCustomTipLabel::instance; }

protected:
    CustomToolTipTest() {
        setPlaceholderTable({{"%MANUAL%", "file:///m"}});
        window = std::make_unique<QWidget>();
        window->setGeometry(50, 50, 300, 200);
        child = new QWidget(window.get());
        child->setGeometry(10, 20, 100, 50);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    QCustomTipLabel *show(const QString &text, QWidget *widget, const QRect &rect = QRect()) {
        QCustomToolTip::showText(position, text, widget, rect);
        return QCustomTipLabel::instance;
    }
    QCustomTipLabel *showAnew(const QString &text, QWidget *widget, const QRect &rect = QRect()) {
        delete QCustomTipLabel::instance;
        return show(text, widget, rect);
    }

    // The private members of the label.
    static QBasicTimer &hideTimer() { return QCustomTipLabel::instance->hideTimer; }
    static QBasicTimer &expireTimer() { return QCustomTipLabel::instance->expireTimer; }
    static int &hideInterval() { return QCustomTipLabel::instance->hideInterval; }
    static QWidget *tipWidget() { return QCustomTipLabel::instance->widget; }

    // The interval of the timer in milliseconds; 0 if it does not run.
    static int intervalOf(const QBasicTimer &timer) {
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(QCustomTipLabel::instance);
        for (const auto &info : timers) {
            if (timer.isActive() && info.timerId == timer.timerId()) {
                return info.interval;
            }
        }
        return 0;
    }

    const QPoint position{100, 100};
    // In the child's coordinates. On the screen, the rectangle is from 60,70 to 109,109.
    const QRect tipRect{0, 0, 50, 40};
    std::unique_ptr<QWidget> window;
    QWidget *child = nullptr;
};

TEST_F(CustomToolTipTest, displayTimeAndSizeFollowTheText) {
    const QString markup = "<b></b>";
    const std::pair<QString, int> rows[] = {
        {QString(101, 'x'), 10040},
        {QString(100, 'x'), 10000},
        {markup + QString(350 - markup.size(), 'x'), 20000},
        // The display time depends on the text's length after the substitution. "file:///m" has 9 characters, and the
        // placeholder has 8.
        {QString(92, 'x') + "%MANUAL%" + 'x', 10080},
    };
    for (const auto &[text, milliseconds] : rows) {
        const QCustomTipLabel *label = show(text, child);
        EXPECT_EQ(intervalOf(expireTimer()), milliseconds) << text.size();
        EXPECT_EQ(intervalOf(hideTimer()), 0);
        EXPECT_EQ(label->width(), label->sizeHint().width() + 1) << text.size();
        EXPECT_EQ(label->wordWrap(), text.startsWith(markup)) << "only rich text wraps";
    }
}

TEST_F(CustomToolTipTest, keepsTheSameTipAndReplacesADifferentTip) {
    const QRect none;
    const struct {
        QRect rect;
        const char *text;
        bool sameWidget;
        QPoint nextPosition;
        bool leftAlone;
    } rows[] = {{none, "see %MANUAL%", true, {300, 300}, true},    {none, "see file:///m", true, position, true},
                {tipRect, "see %MANUAL%", true, {109, 109}, true}, {tipRect, "see %MANUAL%", true, {110, 109}, false},
                {none, "see %MANUAL%", false, {300, 300}, false},  {none, "see %manual%", true, position, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        QCustomTipLabel *label = showAnew("see %MANUAL%", child, row.rect);
        EXPECT_EQ(QCustomToolTip::text(), "see file:///m");
        label->restartHideTimer(10000, false);
        // If the display time restarts, the timer's interval is no longer 12345 ms.
        expireTimer().start(12345, label);
        const QPoint before = label->pos();
        QCustomToolTip::showText(row.nextPosition, row.text, row.sameWidget ? child : window.get(), row.rect);
        EXPECT_EQ(QCustomTipLabel::instance, label);
        EXPECT_EQ(label->pos(), row.leftAlone ? before : row.nextPosition + QPoint(2, 16));
        // If the tip is shown again, its pending close is cancelled and its display time restarts.
        EXPECT_EQ(intervalOf(hideTimer()), row.leftAlone ? 10000 : 0);
        EXPECT_EQ(intervalOf(expireTimer()), row.leftAlone ? 12345 : 10000);
        EXPECT_EQ(tipWidget(), row.sameWidget ? child : window.get());
    }
}

TEST_F(CustomToolTipTest, emptyTextClosesAVisibleTipAndANewTextReplacesAnInvisibleTip) {
    QCustomToolTip::showText(position, QString(), child);
    EXPECT_EQ(QCustomTipLabel::instance, nullptr);
    const QPointer<QCustomTipLabel> first = show("first", child);
    EXPECT_EQ(first->objectName(), "qtooltip_label");
    QCustomToolTip::hideText();
    EXPECT_EQ(intervalOf(hideTimer()), 200);
    EXPECT_TRUE(QCustomToolTip::isVisible());
    first->hide();
    EXPECT_FALSE(QCustomToolTip::isVisible());
    show("second", child);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(QCustomToolTip::text(), "second");
}

TEST_F(CustomToolTipTest, pressingOrLeavingAnyObjectStartsTheHideTimer) {
    const std::pair<QEvent::Type, int> rows[] = {{QEvent::MouseButtonPress, 500},
                                                 {QEvent::MouseButtonRelease, 500},
                                                 {QEvent::MouseButtonDblClick, 500},
                                                 {QEvent::WindowDeactivate, 500},
                                                 {QEvent::Leave, 10000},
                                                 {QEvent::KeyPress, 0},
                                                 {QEvent::Wheel, 0},
                                                 {QEvent::FocusOut, 0},
                                                 {QEvent::WindowActivate, 0},
                                                 {QEvent::Enter, 0}};
    QObject other;
    for (const auto &[type, milliseconds] : rows) {
        QEvent event(type);
        showAnew("text", child);
        EXPECT_FALSE(QCustomTipLabel::instance->eventFilter(&other, &event)) << type;
        EXPECT_EQ(intervalOf(hideTimer()), milliseconds) << type;
    }
    // The label sees the events of every object, because it is the application's event filter.
    showAnew("text", child);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&other, &leave);
    EXPECT_EQ(intervalOf(hideTimer()), 10000);
}

TEST_F(CustomToolTipTest, keepsAPendingCloseThatIsDueSooner) {
    const struct {
        const char *what;
        int remaining, requested;
        bool force, restarted;
    } rows[] = {{"sooner, but not forced", 10000, 200, false, false},
                {"press after leave", 10000, 500, true, true},
                {"button released after a key was pressed", 200, 500, true, false},
                {"at the same time", 200, 200, true, false},
                {"long overdue", -5, 200, true, false}};
    for (const auto &row : rows) {
        QCustomTipLabel *label = showAnew("text", child);
        label->restartHideTimer(20000, true);
        // Makes the label believe that only this much of the interval remains.
        hideInterval() = row.remaining;
        label->restartHideTimer(row.requested, row.force);
        EXPECT_EQ(intervalOf(hideTimer()), row.restarted ? row.requested : 20000) << row.what;
    }
}

TEST_F(CustomToolTipTest, timersCloseTheTip) {
    for (const auto timer : {&hideTimer, &expireTimer}) {
        const QPointer<QCustomTipLabel> label = show("text", child);
        label->restartHideTimer(500, true);
        QTimerEvent foreign(std::max(hideTimer().timerId(), expireTimer().timerId()) + 1);
        QCoreApplication::sendEvent(label, &foreign);
        EXPECT_TRUE(QCustomToolTip::isVisible());

        QTimerEvent due(timer().timerId());
        QCoreApplication::sendEvent(label, &due);
        EXPECT_FALSE(QCustomToolTip::isVisible());
        EXPECT_FALSE(hideTimer().isActive() || expireTimer().isActive());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(label.isNull());
        EXPECT_EQ(QCustomTipLabel::instance, nullptr);
        EXPECT_EQ(QCustomToolTip::text(), QString());
    }
}

TEST_F(CustomToolTipTest, mouseOutsideTheRectangleStartsTheHideTimer) {
    const QPoint inside(60, 70);
    const QPoint outside(59, 70);
    const struct {
        const char *what;
        QRect rect;
        bool overTheTip, ofTheWidget;
        QPoint global;
        int milliseconds;
    } rows[] = {{"widget, outside", tipRect, false, true, outside, 10000},
                {"widget, inside", tipRect, false, true, inside, 0},
                {"widget, no rectangle", QRect(), false, true, outside, 0},
                {"another widget", tipRect, false, false, outside, 0},
                {"tip, outside", tipRect, true, true, outside, 10000},
                {"tip, inside", tipRect, true, true, inside, 0},
                {"tip, no rectangle", QRect(), true, true, outside, 0},
                {"tip of no widget, inside", tipRect, true, false, QPoint(49, 39), 0}};
    for (const auto &row : rows) {
        QCustomTipLabel *label = showAnew("text", row.overTheTip && !row.ofTheWidget ? nullptr : child, row.rect);
        QWidget *target = row.overTheTip ? label : row.ofTheWidget ? child : window.get();
        QMouseEvent event(QEvent::MouseMove, target->mapFromGlobal(row.global), row.global, Qt::NoButton, Qt::NoButton,
                          {});
        QCoreApplication::sendEvent(target, &event);
        EXPECT_EQ(intervalOf(hideTimer()), row.milliseconds) << row.what;
        // A second move does not delay the pending close.
        hideTimer().start(12345, label);
        QCoreApplication::sendEvent(target, &event);
        EXPECT_EQ(intervalOf(hideTimer()), 12345) << row.what;
    }
}

TEST_F(CustomToolTipTest, staysOnTheScreen) {
    ASSERT_EQ(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 800, 600));
    const QSize size(100, 50);
    const struct {
        const char *what;
        QSize size;
        QPoint mouse, place;
    } rows[] = {{"just fits at the right", size, {698, 300}, {700, 316}},
                {"flips to the left", size, {699, 300}, {597, 316}},
                {"just fits at the bottom", size, {300, 534}, {302, 550}},
                {"flips above", size, {300, 535}, {302, 477}},
                {"left edge", size, {-30, 300}, {0, 316}},
                {"top edge", size, {300, -40}, {302, 0}},
                {"beyond the right", size, {950, 300}, {700, 316}},
                {"beyond the bottom", size, {300, 750}, {302, 550}},
                {"too wide to flip", QSize(600, 50), {400, 300}, {0, 316}},
                {"too high to flip", QSize(100, 500), {300, 400}, {302, 0}},
                {"wider than the screen", QSize(900, 50), {400, 300}, {0, 316}},
                {"higher than the screen", QSize(100, 700), {300, 400}, {302, -100}}};
    QCustomTipLabel *label = show("text", child);
    for (const auto &row : rows) {
        label->resize(row.size);
        label->placeTip(row.mouse, child);
        EXPECT_EQ(label->pos(), row.place) << row.what;
    }
}

TEST_F(CustomToolTipTest, keepsItsWidgetIfItHasARectangleAndTheNewWidgetIsNull) {
    show("text", child, tipRect);
    testing::internal::CaptureStderr();
    QCustomToolTip::showText(QPoint(300, 300), "other", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "QCustomToolTip::setTipRect: Cannot pass null widget if rect is set\n");
    EXPECT_EQ(tipWidget(), child);
    EXPECT_EQ(QCustomTipLabel::instance->pos(), QPoint(302, 316));
    EXPECT_EQ(QCustomToolTip::text(), "other");
}

TEST_F(CustomToolTipTest, goesAwayWithItsWidgets) {
    // The label is made for one widget and then shown for another one, which is deleted first.
    show("text", window.get());
    auto *passing = new QWidget(window.get());
    show("text", passing);
    EXPECT_EQ(tipWidget(), passing);
    delete passing;
    EXPECT_EQ(tipWidget(), nullptr);
    window.reset();
    EXPECT_EQ(QCustomTipLabel::instance, nullptr);
}

TEST_F(CustomToolTipTest, paletteHoldsForThisTipAndLaterOnes) {
    const QPalette before = QCustomToolTip::palette();
    QPalette green;
    green.setColor(QPalette::ToolTipBase, Qt::darkGreen);
    show("text", child);
    QCustomToolTip::setPalette(green);
    EXPECT_EQ(QCustomTipLabel::instance->palette().toolTipBase(), green.toolTipBase());
    EXPECT_EQ(showAnew("text", child)->palette().toolTipBase(), green.toolTipBase());
    QCustomToolTip::setPalette(before);
}

TEST_F(CustomToolTipTest, linksOpenInTheBrowserByKeyToo) {
    Browser browser;
    QDesktopServices::setUrlHandler("file", &browser, "openUrl");
    QCustomTipLabel *label = show("<a href=\"%MANUAL%/patterns.html\">link</a>", child);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(label));
    label->setFocus();
    QTest::keyClick(label, Qt::Key_Tab);
    QTest::keyClick(label, Qt::Key_Return);
    EXPECT_EQ(browser.opened, QUrl("file:///m/patterns.html"));
    QDesktopServices::unsetUrlHandler("file");
}

#include "custom_tool_tip_test.moc"

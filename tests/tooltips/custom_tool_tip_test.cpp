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
    // The private members of the label.
    struct State {
        QBasicTimer &hideTimer;
        QBasicTimer &expireTimer;
        QElapsedTimer &hideElapsed;
        int &hideInterval;
        QPointer<QWidget> &widget;
        QRect &rect;
    };

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

    static State stateOf(QCustomTipLabel *label) {
        return {label->hideTimer,    label->expireTimer, label->hideElapsed,
                label->hideInterval, label->widget,      label->rect};
    }

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

    // Expects that the label will close after this time; 0 if no close may be pending.
    static void expectClose(int milliseconds) {
        const State state = stateOf(QCustomTipLabel::instance);
        EXPECT_EQ(intervalOf(state.hideTimer), milliseconds);
        EXPECT_EQ(state.hideInterval, milliseconds);
        EXPECT_EQ(state.hideElapsed.isValid(), milliseconds != 0);
    }

    const QPoint position{100, 100};
    std::unique_ptr<QWidget> window;
    QWidget *child = nullptr;
};

TEST_F(CustomToolTipTest, displayTimeGrowsWithTheText) {
    const QString markup = "<b></b>";
    const std::pair<QString, int> rows[] = {
        {"x", 10000},
        {QString(100, 'x'), 10000},
        {QString(101, 'x'), 10040},
        {QString(350, 'x'), 20000},
        {markup + QString(350 - markup.size(), 'x'), 20000},
        // 9 units after substitution, 8 before.
        {QString(92, 'x') + "%MANUAL%" + 'x', 10080},
    };
    for (const auto &[text, milliseconds] : rows) {
        QCustomTipLabel *label = show(text, child);
        EXPECT_EQ(intervalOf(stateOf(label).expireTimer), milliseconds) << text.size();
        EXPECT_EQ(label->wordWrap(), text.startsWith(markup)) << "only rich text wraps";
        expectClose(0);
    }
}

TEST_F(CustomToolTipTest, leavesTheSameTipAloneAndShowsAnotherAnew) {
    // The child's rectangle 0,0 50x40 is 60,70 to 109,109 of the screen.
    const QRect rect(0, 0, 50, 40);
    const struct {
        QRect rect;
        const char *text;
        bool sameWidget;
        QPoint nextPosition;
        bool leftAlone;
    } rows[] = {{QRect(), "see %MANUAL%", true, {300, 300}, true},   {QRect(), "see file:///m", true, position, true},
                {rect, "see %MANUAL%", true, {109, 109}, true},      {rect, "see %MANUAL%", true, {110, 109}, false},
                {QRect(), "see %MANUAL%", false, {300, 300}, false}, {QRect(), "see %manual%", true, position, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        delete QCustomTipLabel::instance;
        QCustomTipLabel *label = show("see %MANUAL%", child, row.rect);
        EXPECT_EQ(QCustomToolTip::text(), "see file:///m");
        label->restartHideTimer(10000, false);
        // If the display time restarts, the interval is no longer this one.
        stateOf(label).expireTimer.start(12345, label);
        const QPoint before = label->pos();
        QCustomToolTip::showText(row.nextPosition, row.text, row.sameWidget ? child : window.get(), row.rect);
        EXPECT_EQ(QCustomTipLabel::instance, label);
        EXPECT_EQ(label->pos(), row.leftAlone ? before : row.nextPosition + QPoint(2, 16));
        // If the tip is shown again, its pending close is cancelled and its display time restarts.
        expectClose(row.leftAlone ? 10000 : 0);
        EXPECT_EQ(intervalOf(stateOf(label).expireTimer), row.leftAlone ? 12345 : 10000);
        EXPECT_EQ(stateOf(label).widget.data(), row.sameWidget ? child : window.get());
    }
}

TEST_F(CustomToolTipTest, emptyTextClosesAVisibleTip) {
    QCustomToolTip::showText(position, QString(), child);
    EXPECT_EQ(QCustomTipLabel::instance, nullptr);
    QCustomTipLabel *label = show("text", child);
    EXPECT_EQ(label->objectName(), "qtooltip_label");
    QCustomToolTip::hideText();
    expectClose(200);
    EXPECT_TRUE(QCustomToolTip::isVisible());
    EXPECT_EQ(stateOf(label).widget.data(), child);
}

TEST_F(CustomToolTipTest, invisibleTipIsReplaced) {
    const QPointer<QCustomTipLabel> first = show("first", child);
    first->hide();
    EXPECT_FALSE(QCustomToolTip::isVisible());
    show("second", child);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(QCustomToolTip::text(), "second");
}

TEST_F(CustomToolTipTest, pressesAndLeavingStartTheHideTimerWhateverTheirObject) {
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
        SCOPED_TRACE(type);
        QEvent event(type);
        QCustomTipLabel *label = show("text", child);
        EXPECT_FALSE(label->eventFilter(&other, &event));
        expectClose(milliseconds);
        delete label;
    }
    show("text", child);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&other, &leave);
    expectClose(10000);
}

TEST_F(CustomToolTipTest, soonerCloseStands) {
    const struct {
        const char *what;
        int remaining, requested;
        bool force, restarted;
    } rows[] = {{"leave after leave", 10000, 10000, false, false},
                {"sooner without force", 10000, 200, false, false},
                {"press after leave", 10000, 500, true, true},
                {"key press after press", 500, 200, true, true},
                {"release after key press", 200, 500, true, false},
                {"key press after key press", 200, 200, true, false},
                {"long overdue", -5, 200, true, false}};
    for (const auto &row : rows) {
        delete QCustomTipLabel::instance;
        QCustomTipLabel *label = show("text", child);
        label->restartHideTimer(20000, true);
        // Makes the label believe that only this much of the interval remains.
        stateOf(label).hideInterval = row.remaining;
        label->restartHideTimer(row.requested, row.force);
        EXPECT_EQ(intervalOf(stateOf(label).hideTimer), row.restarted ? row.requested : 20000) << row.what;
        EXPECT_EQ(stateOf(label).hideInterval, row.restarted ? row.requested : row.remaining) << row.what;
    }
}

TEST_F(CustomToolTipTest, timersCloseTheTip) {
    for (const bool isHideTimer : {true, false}) {
        const QPointer<QCustomTipLabel> label = show("text", child);
        ASSERT_FALSE(label.isNull());
        label->restartHideTimer(500, true);
        const State state = stateOf(label);
        QTimerEvent foreign(std::max(state.hideTimer.timerId(), state.expireTimer.timerId()) + 1);
        QCoreApplication::sendEvent(label, &foreign);
        EXPECT_TRUE(QCustomToolTip::isVisible());

        QTimerEvent due((isHideTimer ? state.hideTimer : state.expireTimer).timerId());
        QCoreApplication::sendEvent(label, &due);
        EXPECT_FALSE(QCustomToolTip::isVisible());
        expectClose(0);
        EXPECT_FALSE(state.expireTimer.isActive());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(label.isNull());
        EXPECT_EQ(QCustomTipLabel::instance, nullptr);
        EXPECT_EQ(QCustomToolTip::text(), QString());
    }
}

TEST_F(CustomToolTipTest, mouseOutsideTheRectangleStartsTheHideTimer) {
    const QRect rect(0, 0, 50, 40);
    const QPoint inside(60, 70);
    const QPoint outside(59, 70);
    const struct {
        const char *what;
        QRect rect;
        bool overTheTip, ofTheWidget;
        QPoint global;
        int milliseconds;
    } rows[] = {{"widget, outside", rect, false, true, outside, 10000},
                {"widget, inside", rect, false, true, inside, 0},
                {"widget, no rectangle", QRect(), false, true, outside, 0},
                {"another widget", rect, false, false, outside, 0},
                {"tip, outside", rect, true, true, outside, 10000},
                {"tip, inside", rect, true, true, inside, 0},
                {"tip, no rectangle", QRect(), true, true, outside, 0},
                {"tip of no widget, outside", rect, true, false, outside, 10000},
                {"tip of no widget, inside", rect, true, false, QPoint(49, 39), 0}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        delete QCustomTipLabel::instance;
        QCustomTipLabel *label = show("text", row.overTheTip && !row.ofTheWidget ? nullptr : child, row.rect);
        QWidget *target = row.overTheTip ? label : row.ofTheWidget ? child : window.get();
        QMouseEvent event(QEvent::MouseMove, target->mapFromGlobal(row.global), row.global, Qt::NoButton, Qt::NoButton,
                          {});
        QCoreApplication::sendEvent(target, &event);
        expectClose(row.milliseconds);
        // A second move does not delay the pending close.
        stateOf(label).hideTimer.start(12345, label);
        QCoreApplication::sendEvent(target, &event);
        EXPECT_EQ(intervalOf(stateOf(label).hideTimer), 12345);
    }
}

TEST_F(CustomToolTipTest, staysOnTheScreen) {
    ASSERT_EQ(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 800, 600));
    const QSize size(100, 50);
    const struct {
        const char *what;
        QSize size;
        QPoint mouse, place;
    } rows[] = {{"middle", size, {300, 300}, {302, 316}},
                {"just fits at the right", size, {698, 300}, {700, 316}},
                {"flips to the left", size, {699, 300}, {597, 316}},
                {"just fits at the bottom", size, {300, 534}, {302, 550}},
                {"flips above", size, {300, 535}, {302, 477}},
                {"corner", size, {799, 599}, {697, 541}},
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

TEST_F(CustomToolTipTest, storedRectangleNeedsAWidget) {
    const QRect rect(0, 0, 10, 10);
    QCustomTipLabel *label = show("text", child, rect);
    testing::internal::CaptureStderr();
    QCustomToolTip::showText(QPoint(300, 300), "other", nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "QCustomToolTip::setTipRect: Cannot pass null widget if rect is set\n");
    EXPECT_EQ(stateOf(label).widget.data(), child);
    EXPECT_EQ(stateOf(label).rect, rect);
    EXPECT_EQ(label->pos(), QPoint(302, 316));
    EXPECT_EQ(QCustomToolTip::text(), "other");
    // If no rectangle is stored, a new one is accepted without a widget.
    label->setTipRect(child, QRect());
    label->setTipRect(nullptr, rect);
    EXPECT_TRUE(stateOf(label).widget.isNull());
    EXPECT_EQ(stateOf(label).rect, rect);
}

TEST_F(CustomToolTipTest, goesAwayWithItsWidgets) {
    // The label is made for one widget and then shown for another one, which is deleted first.
    QCustomTipLabel *label = show("text", window.get());
    auto *passing = new QWidget(window.get());
    show("text", passing);
    EXPECT_EQ(stateOf(label).widget.data(), passing);
    delete passing;
    EXPECT_TRUE(stateOf(label).widget.isNull());
    show("text", child);
    EXPECT_EQ(stateOf(label).widget.data(), child);
    window.reset();
    EXPECT_EQ(QCustomTipLabel::instance, nullptr);
    EXPECT_FALSE(QCustomToolTip::isVisible());
}

TEST_F(CustomToolTipTest, paletteHoldsForThisTipAndLaterOnes) {
    const QPalette before = QCustomToolTip::palette();
    QPalette palette;
    palette.setColor(QPalette::ToolTipBase, Qt::darkGreen);
    const QCustomTipLabel *label = show("text", child);
    QCustomToolTip::setPalette(palette);
    EXPECT_EQ(label->palette().color(QPalette::ToolTipBase), QColor(Qt::darkGreen));
    delete label;
    label = show("text", child);
    EXPECT_EQ(label->palette().color(label->backgroundRole()), QColor(Qt::darkGreen));
    QCustomToolTip::setPalette(before);
}

TEST_F(CustomToolTipTest, linksOpenInTheBrowserByClickAndByKey) {
    Browser browser;
    QDesktopServices::setUrlHandler("file", &browser, "openUrl");
    QCustomTipLabel *label =
        show("<a href=\"%MANUAL%/guides/calibration/patterns.html\">wide enough to hit</a>", child);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(label));
    const QUrl expected("file:///m/guides/calibration/patterns.html");
    QTest::mouseClick(label, Qt::LeftButton, {}, label->contentsRect().center());
    EXPECT_EQ(browser.opened, expected);
    browser.opened.clear();
    label->setFocus();
    QTest::keyClick(label, Qt::Key_Tab);
    QTest::keyClick(label, Qt::Key_Return);
    EXPECT_EQ(browser.opened, expected);
    QDesktopServices::unsetUrlHandler("file");
}

#include "custom_tool_tip_test.moc"

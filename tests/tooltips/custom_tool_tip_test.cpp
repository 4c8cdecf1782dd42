#include <QAbstractEventDispatcher>
#include <QDesktopServices>
#include <QMouseEvent>
#include <QPointer>
#include <QScreen>
#include <QTimerEvent>
#include <QtTest>

#include "tooltips/custom_tip_label.h"
#include "tooltips/custom_tool_tip.h"
#include "tooltips/manual_placeholder.h"

// Time is asked of the timers, and passes by sending their events.
class CustomToolTipTest : public QObject {
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { openedUrl = url; }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void displayTimeGrowsWithTheText_data();
    void displayTimeGrowsWithTheText();
    void richTextWraps();
    void sameTipIsLeftAlone_data();
    void sameTipIsLeftAlone();
    void emptyTextClosesAVisibleTip();
    void invisibleTipIsReplaced();
    void eventsStartTheHideTimer_data();
    void eventsStartTheHideTimer();
    void soonerCloseStands_data();
    void soonerCloseStands();
    void timersCloseTheTip_data();
    void timersCloseTheTip();
    void mouseOutsideTheRectangleStartsTheHideTimer_data();
    void mouseOutsideTheRectangleStartsTheHideTimer();
    void staysOnTheScreen_data();
    void staysOnTheScreen();
    void storedRectangleNeedsAWidget();
    void goesAwayWithItsWidgets();
    void paletteHoldsForThisTipAndLaterOnes();
    void linksOpenInTheBrowser();

private:
    QCustomTipLabel *show(const QString &text, QWidget *widget, const QRect &rect = QRect());
    static int intervalOf(const QBasicTimer &timer);
    static void fire(const QBasicTimer &timer);

    const QPoint position{100, 100};
    QScopedPointer<QWidget> window;
    QWidget *child = nullptr;
    QUrl openedUrl;
};

void CustomToolTipTest::initTestCase() {
    setPlaceholderTable({{"%MANUAL%", "file:///m"}});
    QDesktopServices::setUrlHandler("file", this, "openUrl");
}

void CustomToolTipTest::init() {
    window.reset(new QWidget);
    window->setGeometry(50, 50, 300, 200);
    child = new QWidget(window.data());
    child->setGeometry(10, 20, 100, 50);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.data()));
}

void CustomToolTipTest::cleanup() {
    delete QCustomTipLabel::instance;
    window.reset();
}

QCustomTipLabel *CustomToolTipTest::show(const QString &text, QWidget *widget, const QRect &rect) {
    QCustomToolTip::showText(position, text, widget, rect);
    return QCustomTipLabel::instance;
}

// In milliseconds; 0 when the timer does not run.
int CustomToolTipTest::intervalOf(const QBasicTimer &timer) {
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(QCustomTipLabel::instance);
    for (const auto &info : timers) {
        if (timer.isActive() && info.timerId == timer.timerId()) {
            return info.interval;
        }
    }
    return 0;
}

void CustomToolTipTest::fire(const QBasicTimer &timer) {
    QTimerEvent event(timer.timerId());
    QCoreApplication::sendEvent(QCustomTipLabel::instance, &event);
}

void CustomToolTipTest::displayTimeGrowsWithTheText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("milliseconds");
    const QString markup = "<b></b>";
    QTest::newRow("one") << "x" << 10000;
    QTest::newRow("100") << QString(100, 'x') << 10000;
    QTest::newRow("101") << QString(101, 'x') << 10040;
    QTest::newRow("350") << QString(350, 'x') << 20000;
    QTest::newRow("markup counts") << markup + QString(350 - markup.size(), 'x') << 20000;
    // 9 units after substitution, 8 before.
    QTest::newRow("the replacement counts") << QString(92, 'x') + "%MANUAL%" + 'x' << 10080;
}

void CustomToolTipTest::displayTimeGrowsWithTheText() {
    QFETCH(QString, text);
    QFETCH(int, milliseconds);
    const QCustomTipLabel *label = show(text, child);
    QCOMPARE(intervalOf(label->expireTimer), milliseconds);
    QVERIFY(!label->hideTimer.isActive());
    QVERIFY(!label->hideElapsed.isValid());
}

void CustomToolTipTest::richTextWraps() {
    QVERIFY(show("<p>rich</p>", child)->wordWrap());
    QVERIFY(!show("plain", child)->wordWrap());
}

void CustomToolTipTest::sameTipIsLeftAlone_data() {
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("sameWidget");
    QTest::addColumn<QPoint>("nextPosition");
    QTest::addColumn<bool>("leftAlone");
    // The child's rectangle 0,0 50x40 is 60,70 to 109,109 of the screen.
    const QRect rect(0, 0, 50, 40);
    const QPoint inside(109, 109);
    const QPoint outside(110, 109);
    QTest::newRow("no rectangle, anywhere") << QRect() << "see %MANUAL%" << true << QPoint(300, 300) << true;
    QTest::newRow("substituted text") << QRect() << "see file:///m" << true << position << true;
    QTest::newRow("inside the rectangle") << rect << "see %MANUAL%" << true << inside << true;
    QTest::newRow("outside the rectangle") << rect << "see %MANUAL%" << true << outside << false;
    QTest::newRow("another widget") << QRect() << "see %MANUAL%" << false << QPoint(300, 300) << false;
    QTest::newRow("another text") << QRect() << "see %manual%" << true << position << false;
}

void CustomToolTipTest::sameTipIsLeftAlone() {
    QFETCH(QRect, rect);
    QFETCH(QString, text);
    QFETCH(bool, sameWidget);
    QFETCH(QPoint, nextPosition);
    QFETCH(bool, leftAlone);
    QCustomTipLabel *label = show("see %MANUAL%", child, rect);
    QCOMPARE(QCustomToolTip::text(), "see file:///m");
    label->restartHideTimer(10000, false);
    // A display time that is begun again shows as another interval.
    label->expireTimer.start(12345, label);
    const QPoint before = label->pos();

    QCustomToolTip::showText(nextPosition, text, sameWidget ? child : window.data(), rect);

    QCOMPARE(QCustomTipLabel::instance, label);
    QCOMPARE(label->pos(), leftAlone ? before : nextPosition + QPoint(2, 16));
    // A tip that is shown anew drops the close that was due and begins its display time again.
    QCOMPARE(label->hideTimer.isActive(), leftAlone);
    QCOMPARE(label->hideElapsed.isValid(), leftAlone);
    QCOMPARE(label->hideInterval, leftAlone ? 10000 : 0);
    QCOMPARE(intervalOf(label->expireTimer), leftAlone ? 12345 : 10000);
    QCOMPARE(label->widget.data(), sameWidget ? child : window.data());
}

void CustomToolTipTest::emptyTextClosesAVisibleTip() {
    QCustomToolTip::showText(position, QString(), child);
    QVERIFY(QCustomTipLabel::instance == nullptr);
    const QCustomTipLabel *label = show("text", child);
    QCOMPARE(label->objectName(), "qtooltip_label");
    QCustomToolTip::hideText();
    QCOMPARE(intervalOf(label->hideTimer), 200);
    QVERIFY(QCustomToolTip::isVisible());
    QCOMPARE(label->widget.data(), child);
}

void CustomToolTipTest::invisibleTipIsReplaced() {
    const QPointer<QCustomTipLabel> first = show("first", child);
    first->hide();
    QVERIFY(!QCustomToolTip::isVisible());
    const QCustomTipLabel *second = show("second", child);
    QVERIFY(first.isNull());
    QCOMPARE(QCustomTipLabel::instance, second);
    QCOMPARE(QCustomToolTip::text(), "second");
}

void CustomToolTipTest::eventsStartTheHideTimer_data() {
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("press") << QEvent::MouseButtonPress << 500;
    QTest::newRow("release") << QEvent::MouseButtonRelease << 500;
    QTest::newRow("double click") << QEvent::MouseButtonDblClick << 500;
    QTest::newRow("window deactivated") << QEvent::WindowDeactivate << 500;
    QTest::newRow("leave") << QEvent::Leave << 10000;
    QTest::newRow("key press") << QEvent::KeyPress << 0;
    QTest::newRow("wheel") << QEvent::Wheel << 0;
    QTest::newRow("focus out") << QEvent::FocusOut << 0;
    QTest::newRow("window activated") << QEvent::WindowActivate << 0;
    QTest::newRow("enter") << QEvent::Enter << 0;
}

void CustomToolTipTest::eventsStartTheHideTimer() {
    QFETCH(QEvent::Type, type);
    QFETCH(int, milliseconds);
    for (const bool ofTheLabel : {false, true}) {
        QCustomTipLabel *label = show("text", child);
        QObject other;
        QObject *object = ofTheLabel ? static_cast<QObject *>(label) : &other;
        QEvent event(type);
        QVERIFY(!label->eventFilter(object, &event));
        QCOMPARE(intervalOf(label->hideTimer), milliseconds);
        QCOMPARE(label->hideInterval, milliseconds);
        QCOMPARE(label->hideElapsed.isValid(), milliseconds != 0);
        delete label;
    }
    // Events reach the filter from the application, whatever their object.
    const QCustomTipLabel *label = show("text", child);
    QObject anyObject;
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&anyObject, &leave);
    QCOMPARE(intervalOf(label->hideTimer), 10000);
}

void CustomToolTipTest::soonerCloseStands_data() {
    QTest::addColumn<int>("remaining");
    QTest::addColumn<int>("requested");
    QTest::addColumn<bool>("force");
    QTest::addColumn<bool>("restarted");
    QTest::newRow("leave after leave") << 10000 << 10000 << false << false;
    QTest::newRow("sooner without force") << 10000 << 200 << false << false;
    QTest::newRow("press after leave") << 10000 << 500 << true << true;
    QTest::newRow("key press after press") << 500 << 200 << true << true;
    QTest::newRow("release after key press") << 200 << 500 << true << false;
    QTest::newRow("key press after key press") << 200 << 200 << true << false;
    QTest::newRow("long overdue") << -5 << 200 << true << false;
}

void CustomToolTipTest::soonerCloseStands() {
    QFETCH(int, remaining);
    QFETCH(int, requested);
    QFETCH(bool, force);
    QFETCH(bool, restarted);
    QCustomTipLabel *label = show("text", child);
    label->restartHideTimer(20000, true);
    // As though the timer had run down to the time that remains.
    label->hideInterval = remaining;
    label->restartHideTimer(requested, force);
    QCOMPARE(intervalOf(label->hideTimer), restarted ? requested : 20000);
    QCOMPARE(label->hideInterval, restarted ? requested : remaining);
}

void CustomToolTipTest::timersCloseTheTip_data() {
    QTest::addColumn<bool>("hide");
    QTest::newRow("hide timer") << true;
    QTest::newRow("display time") << false;
}

void CustomToolTipTest::timersCloseTheTip() {
    QFETCH(bool, hide);
    QCustomTipLabel *label = show("text", child);
    const QPointer<QCustomTipLabel> guard = label;
    label->restartHideTimer(500, true);
    QTimerEvent foreign(std::max(label->hideTimer.timerId(), label->expireTimer.timerId()) + 1);
    QCoreApplication::sendEvent(label, &foreign);
    QVERIFY(QCustomToolTip::isVisible());

    fire(hide ? label->hideTimer : label->expireTimer);
    QVERIFY(!QCustomToolTip::isVisible());
    QVERIFY(!label->hideTimer.isActive());
    QVERIFY(!label->expireTimer.isActive());
    QVERIFY(!label->hideElapsed.isValid());
    QCOMPARE(label->hideInterval, 0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(guard.isNull());
    QVERIFY(QCustomTipLabel::instance == nullptr);
    QCOMPARE(QCustomToolTip::text(), QString());
}

void CustomToolTipTest::mouseOutsideTheRectangleStartsTheHideTimer_data() {
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<bool>("overTheTip");
    QTest::addColumn<bool>("ofTheWidget");
    QTest::addColumn<QPoint>("global");
    QTest::addColumn<int>("milliseconds");
    const QRect rect(0, 0, 50, 40);
    const QPoint inside(60, 70);
    const QPoint outside(59, 70);
    QTest::newRow("widget, outside") << rect << false << true << outside << 10000;
    QTest::newRow("widget, inside") << rect << false << true << inside << 0;
    QTest::newRow("widget, no rectangle") << QRect() << false << true << outside << 0;
    QTest::newRow("another widget") << rect << false << false << outside << 0;
    QTest::newRow("tip, outside") << rect << true << true << outside << 10000;
    QTest::newRow("tip, inside") << rect << true << true << inside << 0;
    QTest::newRow("tip, no rectangle") << QRect() << true << true << outside << 0;
    QTest::newRow("tip of no widget, outside") << rect << true << false << outside << 10000;
    QTest::newRow("tip of no widget, inside") << rect << true << false << QPoint(49, 39) << 0;
}

void CustomToolTipTest::mouseOutsideTheRectangleStartsTheHideTimer() {
    QFETCH(QRect, rect);
    QFETCH(bool, overTheTip);
    QFETCH(bool, ofTheWidget);
    QFETCH(QPoint, global);
    QFETCH(int, milliseconds);
    QCustomTipLabel *label = show("text", overTheTip && !ofTheWidget ? nullptr : child, rect);
    QWidget *target = overTheTip ? label : ofTheWidget ? child : window.data();
    QMouseEvent event(QEvent::MouseMove, target->mapFromGlobal(global), global, Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(target, &event);
    QCOMPARE(intervalOf(label->hideTimer), milliseconds);
    QCOMPARE(label->hideInterval, milliseconds);
    // A second move does not put the close off.
    label->hideTimer.start(12345, label);
    QCoreApplication::sendEvent(target, &event);
    QCOMPARE(intervalOf(label->hideTimer), 12345);
}

void CustomToolTipTest::staysOnTheScreen_data() {
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPoint>("mouse");
    QTest::addColumn<QPoint>("place");
    const QSize size(100, 50);
    QTest::newRow("middle") << size << QPoint(300, 300) << QPoint(302, 316);
    QTest::newRow("just fits at the right") << size << QPoint(698, 300) << QPoint(700, 316);
    QTest::newRow("flips to the left") << size << QPoint(699, 300) << QPoint(597, 316);
    QTest::newRow("just fits at the bottom") << size << QPoint(300, 534) << QPoint(302, 550);
    QTest::newRow("flips above") << size << QPoint(300, 535) << QPoint(302, 477);
    QTest::newRow("corner") << size << QPoint(799, 599) << QPoint(697, 541);
    QTest::newRow("left edge") << size << QPoint(-30, 300) << QPoint(0, 316);
    QTest::newRow("top edge") << size << QPoint(300, -40) << QPoint(302, 0);
    QTest::newRow("beyond the right") << size << QPoint(950, 300) << QPoint(700, 316);
    QTest::newRow("beyond the bottom") << size << QPoint(300, 750) << QPoint(302, 550);
    QTest::newRow("too wide to flip") << QSize(600, 50) << QPoint(400, 300) << QPoint(0, 316);
    QTest::newRow("too high to flip") << QSize(100, 500) << QPoint(300, 400) << QPoint(302, 0);
    QTest::newRow("wider than the screen") << QSize(900, 50) << QPoint(400, 300) << QPoint(0, 316);
    QTest::newRow("higher than the screen") << QSize(100, 700) << QPoint(300, 400) << QPoint(302, -100);
}

void CustomToolTipTest::staysOnTheScreen() {
    QCOMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 800, 600));
    QFETCH(QSize, size);
    QFETCH(QPoint, mouse);
    QFETCH(QPoint, place);
    QCustomTipLabel *label = show("text", child);
    label->resize(size);
    label->placeTip(mouse, child);
    QCOMPARE(label->pos(), place);
}

void CustomToolTipTest::storedRectangleNeedsAWidget() {
    const QRect rect(0, 0, 10, 10);
    QCustomTipLabel *label = show("text", child, rect);
    QTest::ignoreMessage(QtWarningMsg, "QCustomToolTip::setTipRect: Cannot pass null widget if rect is set");
    QCustomToolTip::showText(QPoint(300, 300), "other", nullptr);
    QCOMPARE(label->widget.data(), child);
    QCOMPARE(label->rect, rect);
    QCOMPARE(label->pos(), QPoint(302, 316));
    QCOMPARE(QCustomToolTip::text(), "other");
    // A new rectangle without a widget is taken when none is stored.
    label->setTipRect(child, QRect());
    label->setTipRect(nullptr, rect);
    QVERIFY(label->widget.isNull());
    QCOMPARE(label->rect, rect);
}

void CustomToolTipTest::goesAwayWithItsWidgets() {
    // Made for one widget and shown for another that goes first.
    QCustomTipLabel *label = show("text", window.data());
    auto *passing = new QWidget(window.data());
    show("text", passing);
    QCOMPARE(label->widget.data(), passing);
    delete passing;
    QVERIFY(label->widget.isNull());
    show("text", child);
    QCOMPARE(label->widget.data(), child);
    window.reset();
    QVERIFY(QCustomTipLabel::instance == nullptr);
    QVERIFY(!QCustomToolTip::isVisible());
}

void CustomToolTipTest::paletteHoldsForThisTipAndLaterOnes() {
    const QPalette before = QCustomToolTip::palette();
    QPalette palette;
    palette.setColor(QPalette::ToolTipBase, Qt::darkGreen);
    const QCustomTipLabel *label = show("text", child);
    QCustomToolTip::setPalette(palette);
    QCOMPARE(label->palette().color(QPalette::ToolTipBase), QColor(Qt::darkGreen));
    delete label;
    label = show("text", child);
    QCOMPARE(label->palette().color(label->backgroundRole()), QColor(Qt::darkGreen));
    QCustomToolTip::setPalette(before);
}

void CustomToolTipTest::linksOpenInTheBrowser() {
    QCustomTipLabel *label =
        show("<a href=\"%MANUAL%/guides/calibration/patterns.html\">wide enough to hit</a>", child);
    QVERIFY(QTest::qWaitForWindowExposed(label));
    const QUrl expected("file:///m/guides/calibration/patterns.html");
    QTest::mouseClick(label, Qt::LeftButton, {}, label->contentsRect().center());
    QCOMPARE(openedUrl, expected);
    openedUrl.clear();
    label->setFocus();
    QTest::keyClick(label, Qt::Key_Tab);
    QTest::keyClick(label, Qt::Key_Return);
    QCOMPARE(openedUrl, expected);
}

QTEST_MAIN(CustomToolTipTest)
#include "custom_tool_tip_test.moc"

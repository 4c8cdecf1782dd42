// Tests that no key has two meanings at the same time in the window, that the tab key reaches the window's inputs, and
// that its buttons have room for large fonts.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QTabWidget>
#include <QtTest>

#include "viewer/viewer_window.h"

class ViewerAccessTest : public QObject {
    Q_OBJECT

private slots:
    void givesNoKeyTwoMeanings();
    void reachesEveryInputWithTheTabKey();
    void hasRoomForLargeFonts();
};

void ViewerAccessTest::givesNoKeyTwoMeanings() {
    ViewerWindow window{QString()};
    window.show();
    QSet<QString> shortcuts;
    for (const QAction *action : window.findChildren<QAction *>()) {
        if (action->menu() == nullptr && !action->isSeparator() && !action->text().isEmpty() &&
            action->text().contains('&') && !action->shortcut().isEmpty()) {
            QVERIFY2(!shortcuts.contains(action->shortcut().toString()), qPrintable(action->text()));
            shortcuts.insert(action->shortcut().toString());
        }
    }
    QVERIFY(shortcuts.size() >= 14);
    // The texts that can have a mnemonic. Each text is stored with the tab that contains it, or with null if it is
    // outside the tabs. Texts in different tabs may have the same mnemonic, because only one tab is visible at a time.
    QVector<QPair<QString, const QWidget *>> texts;
    for (const QAction *action : window.menuBar()->actions()) {
        texts.append({action->text(), nullptr});
    }
    const auto *tabs = window.findChild<QTabWidget *>("views");
    for (int tab = 0; tab < tabs->count(); ++tab) {
        texts.append({tabs->tabText(tab), nullptr});
    }
    const auto tabOf = [tabs](const QWidget *widget) -> const QWidget * {
        for (int tab = 0; tab < tabs->count(); ++tab) {
            if (tabs->widget(tab)->isAncestorOf(widget)) {
                return tabs->widget(tab);
            }
        }
        return nullptr;
    };
    for (const QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        texts.append({button->text(), tabOf(button)});
    }
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        texts.append({label->buddy() == nullptr ? QString() : label->text(), tabOf(label)});
    }
    for (int i = 0; i < texts.size(); ++i) {
        for (int j = 0; j < i; ++j) {
            const bool isSeenTogether =
                texts[i].second == nullptr || texts[j].second == nullptr || texts[i].second == texts[j].second;
            const QKeySequence key = QKeySequence::mnemonic(texts[i].first);
            QVERIFY2(!isSeenTogether || key.isEmpty() || key != QKeySequence::mnemonic(texts[j].first),
                     qPrintable(texts[j].first + " and " + texts[i].first));
        }
    }
    // The text of a button may also name another key, as in "(Ctrl+Space)". QAbstractButton::shortcut() must still be
    // the mnemonic in the text.
    for (const QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        QCOMPARE(button->shortcut(), QKeySequence::mnemonic(button->text()));
    }
}

void ViewerAccessTest::reachesEveryInputWithTheTabKey() {
    ViewerWindow window{QString()};
    window.show();
    int inputs = 0;
    for (const QWidget *input : window.findChildren<QWidget *>()) {
        // The buttons of tool bars, and those that scroll a tab bar, need not be reached, because menus and keys do
        // what these buttons do.
        const bool isInput = input->inherits("QAbstractButton") || input->inherits("QComboBox") ||
                             input->inherits("QAbstractSpinBox") || input->inherits("QAbstractItemView");
        const bool isPartOfAnother = input->inherits("QHeaderView") || input->inherits("QTableCornerButton") ||
                                     input->inherits("QComboBoxListView");
        if (isInput && !isPartOfAnother && !input->inherits("QToolButton")) {
            QVERIFY2((input->focusPolicy() & Qt::TabFocus) != 0,
                     qPrintable(input->metaObject()->className() + (" " + input->objectName())));
            ++inputs;
        }
    }
    QVERIFY(inputs > 20);
}

void ViewerAccessTest::hasRoomForLargeFonts() {
    const QFont font = QApplication::font();
    QFont large = font;
    large.setPointSizeF(2 * font.pointSizeF());
    QApplication::setFont(large);
    {
        ViewerWindow window{QString()};
        window.show();
        QCoreApplication::processEvents();
        for (const QWidget *widget : window.findChildren<QWidget *>()) {
            if (widget->inherits("QPushButton") && widget->isVisible()) {
                QVERIFY2(widget->height() >= widget->fontMetrics().height(), qPrintable(widget->objectName()));
            }
        }
    }
    QApplication::setFont(font);
}

QTEST_MAIN(ViewerAccessTest)
#include "viewer_access_test.moc"

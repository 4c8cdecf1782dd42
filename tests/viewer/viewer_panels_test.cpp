// Tests the window's panels and its list of photographs. The results of the session come from the test itself.
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QProxyStyle>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/viewer/drawn_marks.h"
#include "tests/viewer/known_result.h"
#include "viewer/axes_panel.h"
#include "viewer/live_panel.h"
#include "viewer/photograph_list.h"
#include "viewer/session/session.h"
#include "viewer/settings_panel.h"

namespace {

// Stands in for the calibration. The residual of every photograph is 0.123 px, and the second photograph has a problem.
SessionResult scripted(const QVector<SessionPhotograph> &photographs, const SessionSettings &,
                       const calibration::CalibrateOptions &) {
    SessionResult result;
    for (const SessionPhotograph &photograph : photographs) {
        result.fits[photograph.id].rms = 0.123;
    }
    result.fits[photographs.value(1).id].reason = "It is tilted.";
    return result;
}

QString smallPhotograph(const QTemporaryDir &folder, const QString &name) {
    const QString file = folder.filePath(name);
    static const QImage picture =
        QImage(QStringLiteral(VIEWER_EXAMPLE) + "/photograph-01.jpg").scaled(720, 540, {}, Qt::SmoothTransformation);
    return picture.save(file) ? file : QString();
}

}  // namespace

class ViewerPanelsTest : public QObject {
    Q_OBJECT

private slots:
    void reportsEveryEditedSetting();
    void choosesTheAxesOfTheResults();
    void listsWhatIsKnownOfEachPhotograph();
    void drawsTheSelectionInThePalettesColour();
    void takesPicturesByItselfOnlyIfAskedTo();
};

void ViewerPanelsTest::reportsEveryEditedSetting() {
    SettingsPanel panel;
    SessionSettings edited;
    connect(&panel, &SettingsPanel::edited, this, [&edited](const SessionSettings &settings) { edited = settings; });
    SessionSettings settings;
    settings.lens = calibration::LensModel::Pinhole8;
    settings.reference = 3;
    panel.setSettings(settings);
    const QList<QComboBox *> choices = panel.findChildren<QComboBox *>();
    const QList<QDoubleSpinBox *> lengths = panel.findChildren<QDoubleSpinBox *>();
    const QList<QSpinBox *> counts = panel.findChildren<QSpinBox *>();
    const QList<QCheckBox *> checks = panel.findChildren<QCheckBox *>();
    QCOMPARE(choices[1]->currentText(), QString("pinhole8"));
    // Each step edits one input. `change` is the change of the settings that must follow.
    const struct {
        const char *name;
        std::function<void()> edit;
        std::function<void(SessionSettings &)> change;
    } steps[] = {
        {"arrangement",
         [&] {
             choices[0]->setCurrentIndex(1);
             emit choices[0]->activated(1);
         },
         [](SessionSettings &s) { s.arrangement = Arrangement::Rig; }},
        {"grid spacing", [&] { lengths[0]->setValue(12.5); }, [](SessionSettings &s) { s.gridSpacing = 12.5; }},
        {"board", [&] { checks[0]->click(); }, [](SessionSettings &s) { s.board = QSize(9, 6); }},
        {"board columns", [&] { counts[0]->setValue(11); }, [](SessionSettings &s) { s.board = QSize(11, 6); }},
        {"board rows", [&] { counts[1]->setValue(4); }, [](SessionSettings &s) { s.board = QSize(11, 4); }},
        {"board squares", [&] { lengths[1]->setValue(30); }, [](SessionSettings &s) { s.boardSquare = 30; }},
        {"bend", [&] { checks[1]->click(); }, [](SessionSettings &s) { s.mayBend = false; }},
        {"lens",
         [&] {
             choices[1]->setCurrentIndex(0);
             emit choices[1]->activated(0);
         },
         [](SessionSettings &s) { s.lens.reset(); }},
        {"no board", [&] { checks[0]->click(); }, [](SessionSettings &s) { s.board.reset(); }},
    };
    for (const auto &step : steps) {
        step.edit();
        step.change(settings);
        QVERIFY2(edited == settings, step.name);
    }
}

void ViewerPanelsTest::choosesTheAxesOfTheResults() {
    AxesPanel panel;
    SessionSettings edited;
    connect(&panel, &AxesPanel::settingsEdited, this,
            [&edited](const SessionSettings &settings) { edited = settings; });
    const auto result = known_result::Builder().make();
    panel.setResult(result.get());
    auto *reference = panel.findChild<QComboBox *>();
    QCOMPARE(reference->count(), 3);
    QCOMPARE(reference->itemText(2), QString("pattern 7"));
    SessionSettings settings;
    settings.frame = {{{4, 0, 1}, {4, 8, 1}, {7, 2, 3}}};
    panel.setSettings(settings);
    const QList<QLabel *> labels = panel.findChildren<QLabel *>();
    QVERIFY(std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->text() ==
               "Origin: pattern 4, column 0, row 1. On the x axis: pattern 4, column 8, row 1. In the "
               "plane: pattern 7, column 2, row 3.";
    }));
    reference->setCurrentIndex(2);
    emit reference->activated(2);
    QCOMPARE(edited.reference.value_or(-1), 7);
    QVERIFY(!edited.frame);
    panel.setSettings(settings);
    for (QPushButton *button : panel.findChildren<QPushButton *>()) {
        if (button->text() == "Clear") {
            edited = settings;
            button->click();
        }
    }
    QVERIFY(!edited.frame && !edited.reference);
}

void ViewerPanelsTest::listsWhatIsKnownOfEachPhotograph() {
    const QTemporaryDir folder;
    Session session(scripted);
    PhotographListModel model(&session);
    QListView list;
    list.setModel(&model);
    list.setItemDelegate(new PhotographDelegate(&list));
    list.resize(700, 400);
    session.add({smallPhotograph(folder, "first.png"), smallPhotograph(folder, "second.png")});
    QTRY_COMPARE(model.rowCount(), 2);
    QTRY_VERIFY_WITH_TIMEOUT(!session.isReading(), 20000);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    session.calibrateAnew();
    QTRY_VERIFY2(!changes.isEmpty(), "a result does not refresh the list");
    QVERIFY(session.result() != nullptr);

    const auto textsOf = [&model](int row) {
        return model.index(row).data(PhotographListModel::FitRole).toString().replace(QChar(0xa0), ' ') + "|" +
               model.index(row).data(PhotographListModel::ProblemRole).toString();
    };
    QCOMPARE(textsOf(0), QString("0.123 px · patterns 0, 1, 2, 3|"));
    QCOMPARE(textsOf(1), QString("0.123 px · patterns 0, 1, 2, 3|It is tilted."));
    const QString drawn = drawnText(list);
    for (const char *part : {"first.png", "second.png", "0.123 px", "patterns 0, 1, 2, 3", "It is tilted."}) {
        QVERIFY2(drawn.contains(part), qPrintable(drawn));
    }
    QVERIFY(model.setData(model.index(1), Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(session.photographs()[0].isIncluded && !session.photographs()[1].isIncluded);
    QCOMPARE(textsOf(1), QString("patterns 0, 1, 2, 3|"));
    QVERIFY(model.setData(model.index(1), Qt::Checked, Qt::CheckStateRole));
    QVERIFY(session.photographs()[1].isIncluded);
}

// Whatever the style draws, the background of the selected photograph must go with the palette's colour for its text.
void ViewerPanelsTest::drawsTheSelectionInThePalettesColour() {
    struct WindowsLikeStyle : QProxyStyle {
        void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                           const QWidget *widget) const override {
            if (element != PE_PanelItemViewItem) {
                QProxyStyle::drawPrimitive(element, option, painter, widget);
            } else if ((option->state & (State_Selected | State_MouseOver)) != 0) {
                painter->fillRect(option->rect, QColor(0xcc, 0xe8, 0xff));
            }
        }
    } style;
    const QTemporaryDir folder;
    Session session(scripted);
    PhotographListModel model(&session);
    QListView list;
    list.setStyle(&style);
    session.add({smallPhotograph(folder, "first.png")});
    QTRY_COMPARE(model.rowCount(), 1);
    QStyleOptionViewItem option;
    option.widget = &list;
    option.rect = QRect(0, 0, 400, 70);
    option.state = QStyle::State_Enabled | QStyle::State_Active | QStyle::State_Selected | QStyle::State_MouseOver;
    QImage drawn(option.rect.size(), QImage::Format_RGB32);
    QPainter painter(&drawn);
    PhotographDelegate().paint(&painter, option, model.index(0));
    QCOMPARE(drawn.pixelColor(397, 3).name(), option.palette.color(QPalette::Active, QPalette::Highlight).name());
}

void ViewerPanelsTest::takesPicturesByItselfOnlyIfAskedTo() {
    const QTemporaryDir folder;
    for (int i = 0; i < 6; ++i) {
        QVERIFY(!smallPhotograph(folder, QString("frame-%1.png").arg(i)).isEmpty());
    }
    const struct {
        const char *name;
        bool byItself;
        bool isKnown;  // the session has a photograph of the same view
        QString said;
    } cases[] = {{"by itself", true, false, "The video has ended. Pictures taken: 1."},
                 {"known view", true, true, "The video has ended. Pictures taken: 0."},
                 {"not asked for", false, false, "The video has ended. Pictures taken: 0."}};
    for (const auto &one : cases) {
        Session session(scripted);
        LivePanel panel(&session);
        panel.suggestFolder(folder.filePath(QString("kept ") + one.name));
        panel.findChild<QCheckBox *>()->setChecked(one.byItself);
        if (one.isKnown) {
            session.add({folder.filePath("frame-0.png")});
            QTRY_VERIFY_WITH_TIMEOUT(session.result() != nullptr, 20000);
        }
        panel.startFile(folder.filePath("frame-0.png"));
        QTRY_VERIFY_WITH_TIMEOUT(!panel.isRunning(), 60000);
        QCOMPARE(panel.statusText(), one.said);
        QTRY_COMPARE(session.photographs().size(), one.byItself ? 1 : 0);
    }
}

QTEST_MAIN(ViewerPanelsTest)
#include "viewer_panels_test.moc"

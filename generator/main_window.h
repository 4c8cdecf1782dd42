// The program's only window and its controller: every change of an input has the current pattern drawn anew by the
// camera library, and the two buttons save it and start the viewer. It draws no pattern and writes no file itself.
//
// GUI thread only: a running library command blocks the window. Failures of the library are LmLibException; the
// slots show them to the user and return, all other operations let them pass. Lengths are in millimetres.
#pragma once

#include <QGraphicsScene>
#include <QImage>
#include <QMainWindow>
#include <QString>
#include <cstdint>

#include "generator/pattern_choices.h"
#include "ui/main_window_form.h"

class TreeItem;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // Builds the form, which loads the official plates and throws LmLibException where that fails, and draws the
    // first pattern.
    MainWindow();

public slots:
    // Enables the Halcon inputs, recomputes the displays and draws the pattern anew. Bears the name of the widget's
    // repaint operation on purpose, and hides it.
    void update();

    // Asks for a file name and has the library write all current patterns to that file, as PDF or JSON.
    void savePatterns();

    // Starts the viewer, which the library knows the place of, for the calibration of an assembly.
    void openCalTabCalibration();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void connectInputs();
    void enableHalconInputs();

    // The choice lists, the displays and the parameters of a pattern.
    void fillChoiceLists();
    void recomputeDerivedValues();
    // The type of the page in front; without one, or with an unknown one, Official.
    PatternType currentPatternType() const;
    // How many patterns the form describes: those of the assembly, else 1.
    std::int32_t patternCount() const;
    // Writes one pattern below its element of "Patterns"; patternIndex counts from 0.
    void writePatternParameters(const TreeItem &patternItem, std::int32_t patternIndex) const;
    void writeOfficialPattern(const TreeItem &patternItem) const;
    void writeSinglePattern(const TreeItem &patternItem) const;
    void writeFlexiblePattern(const TreeItem &patternItem) const;
    void writeAssemblyPattern(const TreeItem &patternItem, std::int32_t patternIndex) const;
    void writeHalconPattern(const TreeItem &patternItem) const;

    // Replaces the picture by that of the first pattern; after a failure the old one stays.
    void generatePreview();

    MainWindowForm form;
    QGraphicsScene scene;
    QImage previewImage;
    // Where the save dialog opens; empty until a name was confirmed, and not kept between runs.
    QString lastSaveDirectory;
};

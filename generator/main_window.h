// The program's only window and its controller. After every change of an input, it makes the camera library draw the
// current pattern again. Its two buttons save the pattern and start the viewer. The window itself neither draws
// patterns nor writes files.
//
// Use it only on the GUI thread; a running library command blocks the window. Failures of the library are thrown as
// LmLibException. The slots catch them and show them to the user; all other functions let them pass. Lengths are in
// millimetres.
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
    // Builds the form and draws the first pattern. Throws LmLibException if the official plates cannot be loaded.
    MainWindow();

public slots:
    // Enables or disables the Halcon inputs, recomputes the fields that only show computed values, and draws the
    // pattern again. The name `update` intentionally hides QWidget::update().
    void update();

    // Asks for a file name and makes the library write all current patterns to that file. The name's ending selects the
    // format.
    void savePatterns();

    // Starts the viewer, with which an assembly can be calibrated. The viewer's path is the value of
    // /Path/Application/LmView in the library's tree. If this file does not exist or is not executable, shows a
    // message.
    void openCalTabCalibration();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void connectInputs();
    void enableHalconInputs();

    // The first function fills the choice lists, the second the fields that only show computed values.
    void fillChoiceLists();
    void recomputeDerivedValues();
    // Returns the type of the current page; Official if there is no current page or its type is unknown.
    PatternType currentPatternType() const;
    // Returns the number of patterns that the form describes: 1 on every page except Assembly.
    std::int32_t patternCount() const;
    // Writes the parameters of one pattern below `patternItem`, which is the element for this pattern in the command's
    // "Patterns" parameter. `patternIndex` counts from 0.
    void writePatternParameters(const TreeItem &patternItem, std::int32_t patternIndex) const;
    void writeOfficialPattern(const TreeItem &patternItem) const;
    void writeSinglePattern(const TreeItem &patternItem) const;
    void writeFlexiblePattern(const TreeItem &patternItem) const;
    void writeAssemblyPattern(const TreeItem &patternItem, std::int32_t patternIndex) const;
    void writeHalconPattern(const TreeItem &patternItem) const;

    // Draws the first pattern and replaces the picture. If that fails, the old picture stays.
    void generatePreview();

    MainWindowForm form;
    QGraphicsScene scene;
    QImage previewImage;
    // The folder in which the save dialog opens; empty until the user has confirmed a name. It is not kept between
    // runs.
    QString lastSaveDirectory;
};

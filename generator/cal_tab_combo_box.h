// Lists the official calibration plates of the camera library's catalogue. Each plate has an item with the plate's name
// and an entry with the parameters of the plate's pattern. This class does not write parameters to the library.
//
// Item i and entry i describe the same plate. Use the class only on the GUI thread. Failures of the library are thrown
// as LmLibException.
#pragma once

#include <QComboBox>
#include <string>
#include <vector>

// One listed plate. Values that the catalogue leaves out are empty or 0. Lengths are in millimetres.
struct CalTabEntry {
    std::string type;
    double gridSpacing;
    double thickness;
};

class CalTabComboBox : public QComboBox {
public:
    // Loads the list, as reload() does.
    explicit CalTabComboBox(QWidget *parent);

    // Rebuilds the list from the library, in the reverse order of the catalogue, and then sends
    // currentIndexChanged(int) once. If it throws LmLibException, the items added so far stay, and no signal is sent.
    void reload();

    // Return the values of the current plate. Must not be called if the catalogue is empty.
    std::string currentType() const;
    double currentGridSpacing() const;
    double currentThickness() const;

private:
    const CalTabEntry &currentEntry() const;

    // If true, plates without a type are left out.
    bool skipUntyped = false;
    std::vector<CalTabEntry> entries;
};

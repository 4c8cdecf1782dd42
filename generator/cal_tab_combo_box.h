// The list of official calibration plates from the camera library's catalogue: one item per plate with the plate's
// name, and an entry with the values that a pattern of this plate is made with. It writes no pattern.
//
// Item i and entry i describe the same plate. GUI thread only. Failures of the library are thrown as LmLibException.
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

    // Rebuilds the list from the library, last plate of the catalogue first, and then sends currentIndexChanged(int)
    // once. Throws LmLibException; the items added before that stay, and no signal is sent.
    void reload();

    // The values of the current plate. Not to be called if there is none, which happens with an empty catalogue.
    std::string currentType() const;
    double currentGridSpacing() const;
    double currentThickness() const;

private:
    const CalTabEntry &currentEntry() const;

    // If true, plates without a type are left out.
    bool skipUntyped = false;
    std::vector<CalTabEntry> entries;
};

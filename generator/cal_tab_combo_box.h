// The list of official calibration plates, as the camera library knows them: one item per plate, named as in the
// library's catalogue, and beside it the values that a pattern of this plate is made with. It writes no pattern.
//
// Item i and entry i describe the same plate. GUI thread only; every failure of the library is an LmLibException.
#pragma once

#include <QComboBox>
#include <string>
#include <vector>

// One listed plate; what the catalogue leaves out is empty or 0. Lengths in millimetres.
struct CalTabEntry {
    std::string type;
    double gridSpacing;
    double thickness;
};

class CalTabComboBox : public QComboBox {
public:
    // Loads the list at once; throws where that fails.
    explicit CalTabComboBox(QWidget *parent);

    // Rebuilds the list from the library, last plate of the catalogue first, and then sends currentIndexChanged(int)
    // once. Throws LmLibException; the items added before that stay, and no signal is sent.
    void reload();

    // The values of the current plate. There must be one: the list of an empty catalogue has none.
    std::string currentType() const;
    double currentGridSpacing() const;
    double currentThickness() const;

private:
    const CalTabEntry &currentEntry() const;

    // Whether plates without a type are left out.
    bool skipUntyped = false;
    std::vector<CalTabEntry> entries;
};

// The plates that are made and sold ready for use, as the library lists and draws them. All of them are
// checkerboards with 15 x 15 inner corners; a plate differs from another by its grid spacing and thickness
// alone. How a plate is drawn is not known here.
#pragma once

#include <cstddef>
#include <string_view>

namespace lmlib64 {

/// Inner corners of every plate, along either side.
constexpr int plateGridSize = 15;

/// One plate. Lengths are in millimetres; texts are UTF-8 and live as long as the program.
struct CatalogueEntry {
    std::string_view name;  ///< as a user looks for it: outer size, grid spacing
    std::string_view type;  ///< short identifier, never empty
    double gridSpacing;     ///< two squares of the board; the outer size is 8 times it
    double thickness;       ///< of the plate, 0 to 5
};

/// All plates, the smallest first, to iterate over.
class Catalogue {
public:
    const CatalogueEntry *begin() const;
    const CatalogueEntry *end() const;
    std::size_t size() const { return static_cast<std::size_t>(end() - begin()); }
};

/// The plate of that type, or null.
const CatalogueEntry *findPlate(std::string_view type);

}  // namespace lmlib64

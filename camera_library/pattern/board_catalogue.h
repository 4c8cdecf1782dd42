// The catalogue of the boards that are made and sold ready for use. All are checkerboards with 15 x 15 inner corners;
// they differ only in grid spacing and thickness. This file only lists the boards; pattern_types.cpp names the function
// that draws them.
#pragma once

#include <cstddef>
#include <string_view>

namespace lmlib64 {

// One board. Lengths are in millimetres; texts are UTF-8 and live as long as the program.
struct CatalogueBoard {
    std::string_view name;  // outer size and grid spacing as text; users choose a board by its name
    std::string_view type;  // short identifier, never empty
    double gridSpacing;     // the length of two squares; the outer size is 8 times as long
    double thickness;       // 0 to 5
};

// All boards, the smallest first, to iterate over.
class BoardCatalogue {
public:
    const CatalogueBoard *begin() const;
    const CatalogueBoard *end() const;
    std::size_t size() const { return static_cast<std::size_t>(end() - begin()); }
};

// Returns the board of this type; null if there is none.
const CatalogueBoard *findBoard(std::string_view type);

}  // namespace lmlib64

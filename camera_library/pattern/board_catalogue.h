// The boards that are made and sold ready for use, as the library lists and draws them. All are checkerboards with
// 15 x 15 inner corners; they differ only in grid spacing and thickness. How a board is drawn is not known here.
#pragma once

#include <cstddef>
#include <string_view>

namespace lmlib64 {

// One board. Lengths are in millimetres; texts are UTF-8 and live as long as the program.
struct CatalogueBoard {
    std::string_view name;  // as a user looks for it: outer size, grid spacing
    std::string_view type;  // short identifier, never empty
    double gridSpacing;     // two squares of the board; the outer size is 8 times it
    double thickness;       // 0 to 5
};

// All boards, the smallest first, to iterate over.
class BoardCatalogue {
public:
    const CatalogueBoard *begin() const;
    const CatalogueBoard *end() const;
    std::size_t size() const { return static_cast<std::size_t>(end() - begin()); }
};

// The board of that type, or null.
const CatalogueBoard *findBoard(std::string_view type);

}  // namespace lmlib64

#include "camera_library/pattern/board_catalogue.h"

#include <algorithm>
#include <array>

namespace lmlib64 {

namespace {

constexpr std::array boards{
    CatalogueBoard{"24 mm x 24 mm, grid spacing 3 mm", "Plate3", 3.0, 1.0},
    CatalogueBoard{"48 mm x 48 mm, grid spacing 6 mm", "Plate6", 6.0, 1.0},
    CatalogueBoard{"96 mm x 96 mm, grid spacing 12 mm", "Plate12", 12.0, 2.0},
    CatalogueBoard{"128 mm x 128 mm, grid spacing 16 mm", "Plate16", 16.0, 2.0},
    CatalogueBoard{"192 mm x 192 mm, grid spacing 24 mm", "Plate24", 24.0, 3.0},
    CatalogueBoard{"256 mm x 256 mm, grid spacing 32 mm", "Plate32", 32.0, 3.0},
    CatalogueBoard{"384 mm x 384 mm, grid spacing 48 mm", "Plate48", 48.0, 4.0},
    CatalogueBoard{"512 mm x 512 mm, grid spacing 64 mm", "Plate64", 64.0, 5.0},
    CatalogueBoard{"768 mm x 768 mm, grid spacing 96 mm", "Plate96", 96.0, 5.0},
};

}  // namespace

const CatalogueBoard *BoardCatalogue::begin() const {
    return boards.data();
}

const CatalogueBoard *BoardCatalogue::end() const {
    return boards.data() + boards.size();
}

const CatalogueBoard *findBoard(std::string_view type) {
    const auto *board =
        std::find_if(boards.begin(), boards.end(), [type](const CatalogueBoard &each) { return each.type == type; });
    return board == boards.end() ? nullptr : board;
}

}  // namespace lmlib64

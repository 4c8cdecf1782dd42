#include "camera_library/commands/command.h"
#include "camera_library/pattern/board_catalogue.h"

namespace lmlib64 {

namespace {

// Returns the value of the boolean parameter named `list`, which asks for a list. An absent parameter counts as false.
// Throws CommandFailure if the parameter is not a boolean.
bool isAskedFor(const Node &parameters, std::string_view list) {
    const Node *asked = parameters.find(list);
    if (asked == nullptr) {
        return false;
    }
    const bool *value = std::get_if<bool>(&asked->value);
    if (value == nullptr) {
        throw CommandFailure{"InvalidParameter", "The parameter \"" + std::string(list) + "\" must be true or false."};
    }
    return *value;
}

NodeArray listCalTabs() {
    NodeArray boards;
    for (const CatalogueBoard &board : BoardCatalogue()) {
        boards.emplace_back(NodeObject{{"Name", std::string(board.name)},
                                       {"Type", std::string(board.type)},
                                       {"GridSpacing", board.gridSpacing},
                                       {"Thickness", board.thickness}});
    }
    return boards;
}

}  // namespace

// Returns the library's information about calibration boards. If the boolean "ListCalTabs" is true, the result has the
// array "CalTabs" with the "Name", "Type", "GridSpacing" and "Thickness" of every ready-made board.
Node getModelInfo(const Node &parameters) {
    NodeObject result;
    if (isAskedFor(parameters, "ListCalTabs")) {
        result.emplace("CalTabs", listCalTabs());
    }
    return result;
}

}  // namespace lmlib64

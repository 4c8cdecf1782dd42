// Provides a test fixture that saves a pattern as PDF and reads the description attached to it. Also provides sample
// patterns of every type and polarity, which all fit on A4.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/camera_library/pattern_command.h"
#include "tests/camera_library/rendered_page.h"
#include "tests/camera_library/temporary_folder.h"

namespace lmlib64 {

using Json = nlohmann::json;

// Does the same as Json::parse, but is compiled only once. Json::parse takes longer to compile than most tests.
Json parsedJson(const std::string &text);

inline const std::string single = R"({"Type": "SingleCustom", "GridSpacing": 12.5})";
inline const std::string singleInverted = R"({"Type": "SingleCustom", "GridSpacing": 12.5, "Polarity": false})";
inline const std::string flexible =
    R"({"Type": "Flexible", "GridSize": [11, 20], "GridSpacing": 13.37, "Offset": [20.055, -6.685]})";
inline const std::string flexibleInverted =
    R"({"Type": "Flexible", "GridSize": [8, 5], "GridSpacing": 25.1, "Polarity": false})";
inline const std::string assembly = R"({"Type": "Assembly", "AssemblyPattern": 3, "GridSpacing": 16})";
inline const std::string assemblyInverted = R"({"Type": "Assembly", "GridSpacing": 6, "Polarity": false})";
inline const std::string plate = R"({"GridSpacing": 12.5, "Thickness": 2})";
inline const std::string plateInverted = R"({"GridSpacing": 7.77, "Encoding": false, "Polarity": false})";
inline const std::string plateWithOffset = R"({"GridSpacing": 10, "Offset": [1270, -1280], "Polarity": false})";
inline const std::string catalogue = R"({"Type": "Plate12"})";
inline const std::string catalogueInverted = R"({"Type": "Plate3", "Polarity": false})";

inline const std::vector<std::string> allTypes{catalogue, catalogueInverted, single,         singleInverted,
                                               flexible,  flexibleInverted,  assembly,       assemblyInverted,
                                               plate,     plateInverted,     plateWithOffset};
inline const std::set<std::string> withoutCode{plateInverted};  // all others have a code

class SavedPattern : public testing::Test {
protected:
    // Throws if the pattern is not saved, so that no test goes on with an older file.
    void savePdf(const std::string &pattern) {
        pdf = folder.file("pattern.pdf");
        if (const std::string failure = save(pattern, pdf); !failure.empty()) {
            throw std::runtime_error(pattern + ": " + failure);
        }
        description = parsedJson(outputOf("qpdf --show-attachment=pattern.json '" + pdf + "'"));
    }

    const Json &first() const { return description["Patterns"][0]; }

    TemporaryFolder folder;
    std::string pdf;
    Json description;
};

}  // namespace lmlib64

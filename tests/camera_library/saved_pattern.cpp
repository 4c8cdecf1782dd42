#include "tests/camera_library/saved_pattern.h"

namespace lmlib64 {

Json parsedJson(const std::string &text) {
    return Json::parse(text);
}

}  // namespace lmlib64

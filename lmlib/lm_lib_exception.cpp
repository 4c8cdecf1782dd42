#include "lmlib/lm_lib_exception.h"

#include <utility>

#include "camera_library/lmlib64.h"
#include "lmlib/error_codes.h"
#include "lmlib/tree_item.h"

LmLibException::LmLibException(std::string path, std::int32_t code, std::shared_ptr<TemporarySlot> slot)
    : itemPath(std::move(path)), errorCode(code), errorName(::errorName(code)), commandSlot(std::move(slot)) {
    const std::string message = "LmLibException " + errorName + " at " + itemPath;
    lmLibWriteDebugMessage(nullptr, message.c_str());
}

std::string LmLibException::errorSymbol() const {
    return TreeItem(itemPath)["Result"]["ErrorSymbol"].asString();
}

std::string LmLibException::errorText() const {
    return TreeItem(itemPath)["Result"]["ErrorText"].asString();
}

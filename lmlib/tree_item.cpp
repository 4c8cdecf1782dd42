#include "lmlib/tree_item.h"

#include <utility>

#include "camera_library/lmlib64.h"
#include "lmlib/result_check.h"

namespace {

std::string copied(const char *text) {
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace

TreeItem::TreeItem(std::string path) : itemPath(std::move(path)) {}

TreeItem TreeItem::operator[](const std::string &name) const {
    return TreeItem(itemPath + "/" + name);
}

TreeItem TreeItem::operator[](std::int32_t index) const {
    return TreeItem(itemPath + "/\\" + std::to_string(index));
}

const std::string &TreeItem::operator=(const std::string &value) const {
    *this = value.c_str();
    return value;
}

const char *TreeItem::operator=(const char *value) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibSetString(&result, itemPath.c_str(), value);
    checkResult(itemPath, result);
    return value;
}

std::int32_t TreeItem::operator=(std::int32_t value) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibSetInt(&result, itemPath.c_str(), value);
    checkResult(itemPath, result);
    return value;
}

double TreeItem::operator=(double value) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibSetDouble(&result, itemPath.c_str(), value);
    checkResult(itemPath, result);
    return value;
}

bool TreeItem::setBool(bool value) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibSetBool(&result, itemPath.c_str(), value ? 1 : 0);
    checkResult(itemPath, result);
    return value;
}

void TreeItem::setNull() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibSetNull(&result, itemPath.c_str());
    checkResult(itemPath, result);
}

std::string TreeItem::asString() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const char *text = lmLibGetString(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return copied(text);
}

std::string TreeItem::asStringUnchecked() const {
    return copied(lmLibGetString(nullptr, itemPath.c_str()));
}

std::int32_t TreeItem::asInt() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const std::int32_t value = lmLibGetInt(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return value;
}

double TreeItem::asDouble() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const double value = lmLibGetDouble(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return value;
}

bool TreeItem::asBool() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const std::int32_t value = lmLibGetBool(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return value != 0;
}

std::string TreeItem::asJson(bool prettyPrint, std::int32_t numberPrecision, bool allowScientificFormat) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const char *text =
        lmLibGetJson(&result, itemPath.c_str(), prettyPrint ? 1 : 0, numberPrecision, allowScientificFormat ? 1 : 0);
    checkResult(itemPath, result);
    return copied(text);
}

std::int32_t TreeItem::count() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const std::int32_t value = lmLibGetCount(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return value;
}

std::string TreeItem::name() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const char *text = lmLibGetName(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return copied(text);
}

bool TreeItem::exists() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const std::int32_t nodeType = lmLibGetType(&result, itemPath.c_str());
    if (result == LmLibResultItemInexistent) {
        return false;
    }
    checkResult(itemPath, result);
    return nodeType != LmLibTypeAbsent;
}

std::int32_t TreeItem::type() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const std::int32_t nodeType = lmLibGetType(&result, itemPath.c_str());
    checkResult(itemPath, result);
    return nodeType;
}

bool TreeItem::isNull() const {
    return type() == LmLibTypeNull;
}

bool TreeItem::isNumber() const {
    return type() == LmLibTypeNumber;
}

bool TreeItem::isString() const {
    return type() == LmLibTypeString;
}

bool TreeItem::isBoolean() const {
    return type() == LmLibTypeBoolean;
}

bool TreeItem::isObject() const {
    return type() == LmLibTypeObject;
}

void TreeItem::erase() const {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibErase(&result, itemPath.c_str());
    checkResult(itemPath, result);
}

TreeItem TreeItem::makeUniqueItem(const std::string &baseName) const {
    std::int32_t result = LmLibResultOperationSucceeded;
    const char *path = lmLibMakeUniqueItem(&result, itemPath.c_str(), baseName.c_str());
    checkResult(itemPath, result);
    return TreeItem(copied(path));
}

std::string asStringOr(const TreeItem &item, const std::string &defaultValue) {
    if (!item.exists() || !item.isString()) {
        return defaultValue;
    }
    try {
        return item.asString();
    } catch (...) {
        return defaultValue;
    }
}

double asDoubleOr(const TreeItem &item, double defaultValue) {
    if (!item.exists() || !item.isNumber()) {
        return defaultValue;
    }
    try {
        return item.asDouble();
    } catch (...) {
        return defaultValue;
    }
}

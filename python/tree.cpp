// Reads and writes the nodes of the library's tree. Texts from the library are returned as bytes. Texts for the library
// may be bytes or str; a str is passed in UTF-8.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>

#include "camera_library/lmlib64.h"
#include "lmlib/error_codes.h"

namespace lmlib64_python {

namespace py = pybind11;

namespace {

void check(std::int32_t result, const std::string &path) {
    if (result != LmLibResultOperationSucceeded) {
        throw py::key_error(std::string(errorName(result)) + " at \"" + path + "\"");
    }
}

py::bytes json(const std::string &path) {
    std::int32_t result = 0;
    const char *text = lmLibGetJson(&result, path.c_str(), 0, 0, 1);
    check(result, path);
    return py::bytes(text);
}

void setJson(const std::string &path, const std::string &text) {
    std::int32_t result = 0;
    lmLibSetJson(&result, path.c_str(), text.c_str());
    check(result, path);
}

py::bytes string(const std::string &path) {
    std::int32_t result = 0;
    const char *text = lmLibGetString(&result, path.c_str());
    check(result, path);
    return py::bytes(text);
}

void setString(const std::string &path, const std::string &text) {
    std::int32_t result = 0;
    lmLibSetString(&result, path.c_str(), text.c_str());
    check(result, path);
}

// Returns an array of rows x columns, or of rows x columns x channels if the node has more than one channel. The values
// are unsigned integers or floating-point numbers. Each value has as many bytes in the array as in the node.
py::array binary(const std::string &path) {
    std::int32_t result = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 0;
    std::int32_t bytes = 0;
    std::int32_t isFloat = 0;
    lmLibGetBinaryInfo(&result, path.c_str(), &width, &height, &channels, &bytes, &isFloat, nullptr);
    check(result, path);
    std::vector<py::ssize_t> shape{height, width};
    if (channels > 1) {
        shape.push_back(channels);
    }
    py::array array(py::dtype((isFloat != 0 ? "f" : "u") + std::to_string(bytes)), shape);
    lmLibGetBinary(&result, path.c_str(), array.mutable_data(), std::int32_t(array.nbytes()), nullptr, nullptr);
    check(result, path);
    return array;
}

std::string makeSlot() {
    std::int32_t result = 0;
    const char *path = lmLibMakeUniqueItem(&result, "/Execute", "Python");
    check(result, "/Execute");
    return path;
}

// Waits without the interpreter's lock, so that other Python threads can run.
void waitForCommand(const std::string &slot) {
    std::int32_t result = 0;
    const std::string path = slot + "/Command";
    {
        const py::gil_scoped_release released;
        lmLibWaitForType(&result, path.c_str(), LmLibTypeNull, 1);
    }
    check(result, path);
}

}  // namespace

void defineTree(py::module_ &module);
void defineTree(py::module_ &module) {
    module.def("get_json", json);
    module.def("set_json", setJson);
    module.def("get_string", string);
    module.def("set_string", setString);
    module.def("get_binary", binary);
    module.def("get_type", [](const std::string &path) { return lmLibGetType(nullptr, path.c_str()); });
    module.def("get_count", [](const std::string &path) {
        std::int32_t result = 0;
        const std::int32_t count = lmLibGetCount(&result, path.c_str());
        check(result, path);
        return count;
    });
    module.def("erase", [](const std::string &path) {
        std::int32_t result = 0;
        lmLibErase(&result, path.c_str());
        check(result, path);
    });
    module.def("make_slot", makeSlot);
    module.def("wait_for_command", waitForCommand);
}

}  // namespace lmlib64_python

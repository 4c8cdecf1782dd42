// The compiled part of the Python package: the library's tree and commands, the reader and the calibration.
// lmlib64/__init__.py wraps them in Python functions and documents these for users.
#include <pybind11/pybind11.h>

namespace lmlib64_python {

void defineTree(pybind11::module_ &module);
void defineReader(pybind11::module_ &module);
void defineCalibration(pybind11::module_ &module);

}  // namespace lmlib64_python

PYBIND11_MODULE(_lmlib64, module) {
    lmlib64_python::defineTree(module);
    lmlib64_python::defineReader(module);
    lmlib64_python::defineCalibration(module);
}

// The compiled part of the Python package: the library's tree and commands, and the reader. lmlib64/__init__.py gives
// them their Python form and has the documentation for users.
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
